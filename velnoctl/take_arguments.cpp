#include "velnoctl/take_arguments.h"

#include "velnoctl/arguments.h"
#include "velnoctl/nearest.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

bool isCommandName(const ArgumentKind &kind)
{
    return QLatin1StringView(kind.name) == "COMMAND"_L1;
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

/** What is wrong with a value, or nothing. */
QString fault(const Argument &argument, const QString &value)
{
    if (argument.kind->matches(value))
        return {};
    const QString problem = u"\"%1\" is no %2; accepted is %3"_s.arg(
        value, QLatin1StringView(argument.kind->name), QLatin1StringView(argument.kind->accepted));
    return isCommandName(*argument.kind) ? problem + didYouMean(value, commandNames(Everywhere)) : problem;
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
QString takePlaced(const QList<Argument> &arguments, Place place, QStringList &words, QStringList &values)
{
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const Argument &argument = arguments.at(i);
        if (!argument.key.isEmpty() || (argument.isOptional && !isGiven(*argument.kind, words, place)))
            return {};
        if (words.isEmpty())
            return u"%1 is missing; accepted is %2"_s.arg(argument.usage(),
                                                          QLatin1StringView(argument.kind->accepted));
        if (const QString wrong = fault(argument, words.first()); !wrong.isEmpty())
            return wrong;
        values[i] = words.takeFirst();
    }
    return {};
}

/** Takes the words key=VALUE that stand in front. */
QString takeKeyed(const QList<Argument> &arguments, QStringList &words, QStringList &values)
{
    const QString accepted = keysHelp(arguments);
    while (!accepted.isEmpty() && !words.isEmpty() && hasKey(words.first())) {
        const QString word = words.takeFirst();
        const QString key = word.left(word.indexOf(u'='));
        const qsizetype i = std::ranges::find(arguments, key, &Argument::key) - arguments.begin();
        if (i == arguments.size())
            return u"\"%1\": accepted are %2"_s.arg(word, accepted) + didYouMean(key, keysOf(arguments));
        if (!values.at(i).isNull())
            return u"\"%1\": %2= is given twice"_s.arg(word, key);
        values[i] = word.sliced(key.size() + 1); // empty, but not null, behind a lone key=
        if (const QString wrong = fault(arguments.at(i), values.at(i)); !wrong.isEmpty())
            return u"%1="_s.arg(key) + wrong;
    }
    return {};
}

} // namespace

QString takeArguments(const Command &command, Place place, QStringList &words, QStringList *values)
{
    const QLatin1StringView name(command.name);
    const QList<Argument> arguments = argumentsOf(command);
    for (int times = 1;; ++times) {
        QStringList taken(arguments.size());
        QString wrong = takePlaced(arguments, place, words, taken);
        if (wrong.isEmpty())
            wrong = takeKeyed(arguments, words, taken);
        if (!wrong.isEmpty())
            return name + u": "_s + wrong;
        *values << taken;
        if (command.most == 1 || words.isEmpty() || words.first() != "+"_L1)
            return {};
        if (times == command.most)
            return u"%1: \"+\" is one too many; accepted are up to %2"_s.arg(name).arg(command.most);
        words.removeFirst();
    }
}

} // namespace VelnoCtl
