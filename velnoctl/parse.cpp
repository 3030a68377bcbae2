// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/parse.h"

#include "translations/spoken.h"
#include "velnoctl/line_reader.h"
#include "velnoctl/nearest.h"
#include "velnoctl/take_arguments.h"
#include "velnoctl/words.h"

#include <QFile>

#include <cerrno>
#include <cstring>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr qsizetype mostSteps = 100'000; // of one file

Parsed problem(const QString &text)
{
    return {{}, text};
}

QString unknownCommand(const QString &word, Place place)
{
    if (word.startsWith("--"_L1) && place == CommandLine)
        return Spoken::tr("\"%1\": options stand in front of the first command").arg(word);
    return Spoken::tr("\"%1\" is no command").arg(word) + didYouMean(word, commandNames(place));
}

QString misplacedCommand(const Command &command, Place place)
{
    const auto words = [](unsigned places) {
        QStringList found;
        if (places & CommandLine)
            found << Spoken::tr("on the command line");
        if (places & Script)
            found << Spoken::tr("in a script");
        if (places & Shell)
            found << Spoken::tr("in the shell");
        return found.join(Spoken::tr(" and "));
    };
    return Spoken::tr("%1 cannot stand %2, only %3")
        .arg(QLatin1StringView(command.name), words(place), words(command.places));
}

/** FILE:LINE, whatever signs the file's name consists of. */
QString placeOf(const QString &path, const LineReader &reader)
{
    return path + u':' + QString::number(reader.lineNumber());
}

/** Every line of the file, none of them run. */
Parsed loadScript(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return problem(u"%1: %2"_s.arg(path, file.errorString()));
    LineReader reader(file.handle());
    Parsed script;
    QByteArray line;
    LineReader::Outcome outcome{};
    while ((outcome = reader.next(&line)) == LineReader::Line) {
        const QString where = placeOf(path, reader);
        const Parsed parsed = parseLine(line, Script, where);
        if (!parsed.problem.isEmpty())
            return parsed;
        script.steps << parsed.steps;
        if (script.steps.size() > mostSteps)
            return problem(Spoken::tr("%1: more than %2 commands").arg(where, QString::number(mostSteps)));
    }
    if (outcome == LineReader::End)
        return script;
    return problem(placeOf(path, reader) + u": "_s +
                   (outcome == LineReader::TooLong
                        ? Spoken::tr("the line is longer than %1 bytes").arg(LineReader::longestLine)
                        : QString::fromLocal8Bit(std::strerror(errno))));
}

/** The command in front of `words` and its arguments, taken away from them. */
Parsed takeCommand(QStringList &words, Place place)
{
    const QString name = words.takeFirst();
    Step step{commandNamed(name), {}, {}};
    if (!step.command)
        return problem(unknownCommand(name, place));
    if (!(step.command->places & place))
        return problem(misplacedCommand(*step.command, place));
    if (const QString wrong = takeArguments(*step.command, place, words, &step.arguments); !wrong.isEmpty())
        return problem(wrong);
    if (name != "run"_L1)
        return {{step}, {}};
    if (const QString &file = step.arguments.value(Kinds::file); file != "-"_L1)
        return loadScript(file);
    if (place != CommandLine)
        return problem(Spoken::tr("run - belongs on the command line: commands are read from there already"));
    return {{step}, {}};
}

} // namespace

Parsed parseWords(const QStringList &words, Place place)
{
    Parsed parsed;
    QStringList rest = words;
    while (!rest.isEmpty()) {
        const Parsed next = takeCommand(rest, place);
        if (!next.problem.isEmpty())
            return next;
        parsed.steps << next.steps;
        if (!rest.isEmpty() && place != CommandLine)
            return problem(Spoken::tr("\"%1\" is one word too many: %2 is the whole command")
                               .arg(rest.first(), commandUsage(*commandNamed(words.first()))));
    }
    return parsed;
}

Parsed parseLine(const QByteArray &line, Place place, const QString &where)
{
    QStringList words;
    const QString wrong = splitWords(line, &words);
    Parsed parsed = wrong.isEmpty() ? parseWords(words, place) : problem(wrong);
    if (where.isEmpty())
        return parsed;
    if (!parsed.problem.isEmpty())
        parsed.problem.prepend(where + ": "_L1);
    for (Step &step : parsed.steps) {
        if (step.where.isEmpty())
            step.where = where;
    }
    return parsed;
}

} // namespace VelnoCtl
