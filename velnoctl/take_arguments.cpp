// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/take_arguments.h"

#include "translations/spoken.h"
#include "velnoctl/nearest.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

bool isCommandName(const ArgumentKind &kind)
{
    return &kind == &Kinds::command;
}

/** Whether the next word belongs to an optional argument of this kind, not to the command behind it. */
bool isGiven(const ArgumentKind &kind, const QStringList &words, Place place)
{
    if (words.isEmpty())
        return false;
    return place != CommandLine || isCommandName(kind) || !commandNamed(words.first());
}

bool hasKey(const QString &word)
{
    static const QRegularExpression rule(u"\\A[A-Za-z]+="_s);
    return rule.match(word).hasMatch();
}

/** Reads a value. @return what is wrong with it, or nothing */
QString readValue(const ArgumentKind &kind, const QString &value, Arguments &taken)
{
    const bool isUnknownCommand = isCommandName(kind) && !commandNamed(value);
    if (!isUnknownCommand && taken.read(kind, value))
        return {};
    const QString problem = Spoken::tr("\"%1\" is no %2; accepted is %3")
                                .arg(value, QLatin1StringView(kind.name), Spoken::tr(kind.accepted));
    return isCommandName(kind) ? problem + didYouMean(value, commandNames(Everywhere)) : problem;
}

QString keysHelp(const QList<Argument> &arguments)
{
    QStringList keys;
    for (const Argument &argument : arguments) {
        if (!argument.key.isEmpty())
            keys << argument.usage();
    }
    return keys.join(", "_L1);
}

QStringList keysOf(const QList<Argument> &arguments)
{
    QStringList keys;
    for (const Argument &argument : arguments) {
        if (!argument.key.isEmpty())
            keys << argument.key;
    }
    return keys;
}

/** Takes the words behind each other that stand in front. */
QString takePlaced(const QList<Argument> &row, Place place, QStringList &words, Arguments &taken)
{
    for (const Argument &argument : row) {
        if (!argument.key.isEmpty() || (argument.isOptional && !isGiven(*argument.kind, words, place)))
            return {};
        if (words.isEmpty())
            return Spoken::tr("%1 is missing; accepted is %2")
                .arg(argument.usage(), Spoken::tr(argument.kind->accepted));
        if (const QString wrong = readValue(*argument.kind, words.takeFirst(), taken); !wrong.isEmpty())
            return wrong;
    }
    return {};
}

/** Takes the words key=VALUE that stand in front. */
QString takeKeyed(const QList<Argument> &row, QStringList &words, Arguments &taken)
{
    const QString accepted = keysHelp(row);
    while (!accepted.isEmpty() && !words.isEmpty() && hasKey(words.first())) {
        const QString word = words.takeFirst();
        const QString key = word.left(word.indexOf(u'='));
        const auto argument = std::ranges::find(row, key, &Argument::key);
        if (argument == row.end())
            return Spoken::tr("\"%1\": accepted are %2").arg(word, accepted) + didYouMean(key, keysOf(row));
        if (taken.has(*argument->kind))
            return Spoken::tr("\"%1\": %2= is given twice").arg(word, key);
        const QString value = word.sliced(key.size() + 1);
        if (const QString wrong = readValue(*argument->kind, value, taken); !wrong.isEmpty())
            return u"%1="_s.arg(key) + wrong;
    }
    return {};
}

} // namespace

QString takeArguments(const Command &command, Place place, QStringList &words, Arguments *arguments)
{
    const QLatin1StringView name(command.name);
    const QList<Argument> row = argumentsOf(command.arguments);
    *arguments = Arguments(row);
    Arguments *taken = arguments;
    for (int times = 1;; ++times) {
        QString wrong = takePlaced(row, place, words, *taken);
        if (wrong.isEmpty())
            wrong = takeKeyed(row, words, *taken);
        if (!wrong.isEmpty())
            return name + u": "_s + wrong;
        if (command.most == 1 || words.isEmpty() || words.first() != "+"_L1)
            return {};
        if (times == command.most)
            return Spoken::tr("%1: \"+\" is one too many; accepted are up to %2").arg(name).arg(command.most);
        words.removeFirst();
        taken = &arguments->repeat(row);
    }
}

} // namespace VelnoCtl
