// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QTranslator>

#include <functional>

/**
 * What the programs say to people: in English, as it stands in the code, or in Turkish, from velno_tr.ts.
 * What they say to programs (JSON, events, key logs) passes by here, and is the same in every language.
 */
namespace Spoken {

/** The text in the language that a Speaker speaks; in English when there is none. */
QString tr(const char *text);

/** Marks a text of a table for translation; it is given to tr() when it is said. */
constexpr const char *later(const char *text)
{
    return text;
}

/** The value of a variable of the environment; empty when it is not set. */
using Variable = std::function<QByteArray(const char *name)>;

/**
 * The language that an environment asks for, "tr" or "en". The locale is the first of LC_ALL, LC_MESSAGES and
 * LANG that is not empty; it need not be one that the system has. C, POSIX and none at all are English,
 * whatever LANGUAGE says; otherwise the first of LANGUAGE's that is known here goes before the locale.
 */
QByteArray languageOf(const Variable &variable);

/** languageOf() this process. */
QByteArray languageOfUser();

/**
 * While it lives, the application speaks this language, and so does the system where it explains an error. It
 * is made behind the QCoreApplication, ends before it, and there is one at a time. Numbers are read and
 * written with a dot from then on, also by functions of C.
 */
class Speaker
{
public:
    explicit Speaker(const QByteArray &language = languageOfUser());
    ~Speaker();
    Q_DISABLE_COPY_MOVE(Speaker)

private:
    QTranslator m_turkish;
};

} // namespace Spoken
