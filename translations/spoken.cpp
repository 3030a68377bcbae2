// SPDX-License-Identifier: Apache-2.0

#include "translations/spoken.h"

#include <QCoreApplication>

#include <clocale>

using namespace Qt::StringLiterals;

/** Not in a namespace: what rcc makes is in none. */
static void haveTranslations()
{
    Q_INIT_RESOURCE(translations); // the linker leaves out what nobody in a static library names
}

namespace Spoken {

namespace {

/** What Qt says in the programs' names; its own translations need not be installed. */
[[maybe_unused]] constexpr const char *saidByQt[] = {
    QT_TRANSLATE_NOOP("QCommandLineParser", "Usage: %1"),
    QT_TRANSLATE_NOOP("QCommandLineParser", "[options]"),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Options:"),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Unknown option '%1'."),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Unknown options: %1."),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Missing value after '%1'."),
    QT_TRANSLATE_NOOP("QCommandLineParser", "Unexpected value after '%1'."),
    QT_TRANSLATE_NOOP("QIODevice", "Permission denied"),
    QT_TRANSLATE_NOOP("QIODevice", "Too many open files"),
    QT_TRANSLATE_NOOP("QIODevice", "No such file or directory"),
    QT_TRANSLATE_NOOP("QIODevice", "No space left on device"),
    QT_TRANSLATE_NOOP("QNativeSocketEngine", "Permission denied"),
    QT_TRANSLATE_NOOP("QNativeSocketEngine", "The address is not available"),
    QT_TRANSLATE_NOOP("QNativeSocketEngine", "The address is protected"),
    QT_TRANSLATE_NOOP("QNativeSocketEngine", "The bound address is already in use"),
};

/** "tr" of "tr_TR.UTF-8", "tr_TR@euro", "tr". */
QByteArray languageIn(const QByteArray &locale)
{
    qsizetype letters = 0;
    while (letters < locale.size() && QByteArrayView("_.@").indexOf(locale.at(letters)) < 0)
        ++letters;
    return locale.first(letters);
}

} // namespace

QString tr(const char *text)
{
    return QCoreApplication::translate("Spoken", text);
}

QByteArray languageOf(const Variable &variable)
{
    QByteArray locale;
    for (const char *const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale.isEmpty())
            locale = variable(name);
    }
    const QByteArray language = languageIn(locale);
    if (language.isEmpty() || language == "C" || language == "POSIX")
        return "en"_ba;
    for (const QByteArray &wish : variable("LANGUAGE").split(':')) {
        if (const QByteArray wished = languageIn(wish); wished == "tr" || wished == "en")
            return wished;
    }
    return language == "tr" ? language : "en"_ba;
}

QByteArray languageOfUser()
{
    return languageOf([](const char *name) { return qgetenv(name); });
}

Speaker::Speaker(const QByteArray &language)
{
    haveTranslations();
    const bool isTurkish = language == "tr";
    // Qt has taken the whole locale of the user over.
    std::setlocale(LC_NUMERIC, "C");
    std::setlocale(LC_MESSAGES, isTurkish ? "" : "C");
    if (isTurkish && m_turkish.load(u":/translations/velno_tr.qm"_s))
        QCoreApplication::installTranslator(&m_turkish);
}

Speaker::~Speaker()
{
    QCoreApplication::removeTranslator(&m_turkish);
    std::setlocale(LC_MESSAGES, "C");
}

} // namespace Spoken
