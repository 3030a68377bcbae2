// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/words.h"

#include "translations/spoken.h"

#include <histedit.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr qsizetype longestLetter = 4; // bytes of UTF-8

struct EndTokenizer
{
    void operator()(Tokenizer *tokenizer) const noexcept { tok_end(tokenizer); }
};

/** Finds the comment, which the tokenizer does not know, and what the tokenizer does not name. */
class LineScan
{
public:
    explicit LineScan(const QByteArray &line)
        : m_line(line)
    {
        for (m_at = 0; m_at < line.size() && !isComment(); ++m_at)
            step(line.at(m_at));
        m_text = line.first(qMin(m_at, line.size()));
    }

    /** The line up to its comment. */
    const QByteArray &text() const { return m_text; }

    /** What is wrong with its quotes, or nothing. */
    QString problem() const
    {
        if (m_endsWithBackslash)
            return Spoken::tr("byte %1 is a backslash with nothing behind it").arg(m_line.size());
        if (m_quote != 0)
            return Spoken::tr("the quote %1 at byte %2 is not closed")
                .arg(QLatin1Char(m_quote))
                .arg(m_opened + 1);
        return {};
    }

private:
    bool isComment() const { return m_line.at(m_at) == '#' && m_isBetweenWords; }

    void step(char c)
    {
        m_isBetweenWords = m_quote == 0 && (c == ' ' || c == '\t');
        if (c == m_quote) {
            m_quote = 0;
        } else if (m_quote == 0 && (c == '\'' || c == '"')) {
            m_quote = c;
            m_opened = m_at;
        } else if (c == '\\' && m_quote != '\'') {
            m_endsWithBackslash = ++m_at == m_line.size(); // otherwise it protects the byte behind it
        }
    }

    const QByteArray &m_line;
    QByteArray m_text;
    qsizetype m_at = 0;
    qsizetype m_opened = 0;
    char m_quote = 0;
    bool m_isBetweenWords = true;
    bool m_endsWithBackslash = false;
};

/** How many bytes at this place are one letter; 0 when they are none. */
qsizetype letterAt(QByteArrayView text, qsizetype at)
{
    for (qsizetype size = 1; size <= qMin(longestLetter, text.size() - at); ++size) {
        if (text.sliced(at, size).isValidUtf8())
            return size;
    }
    return 0;
}

/** What keeps the bytes from being a text, or nothing. */
QString encodingProblem(const QByteArray &text)
{
    for (qsizetype at = 0; at < text.size();) {
        const qsizetype size = letterAt(text, at);
        if (size == 0)
            return Spoken::tr("byte %1 (0x%2) is no UTF-8, which every line has to be")
                .arg(at + 1)
                .arg(QString::fromLatin1(text.sliced(at, 1).toHex().toUpper()));
        if (text.at(at) == '\0')
            return Spoken::tr("byte %1 is a zero byte, which no line may hold").arg(at + 1);
        at += size;
    }
    return {};
}

} // namespace

QString splitWords(const QByteArray &line, QStringList *words)
{
    words->clear();
    const LineScan scan(line);
    if (const QString problem = encodingProblem(scan.text()); !problem.isEmpty())
        return problem;
    if (const QString problem = scan.problem(); !problem.isEmpty())
        return problem;
    const std::unique_ptr<Tokenizer, EndTokenizer> tokenizer(tok_init(nullptr));
    int count = 0;
    const char **found = nullptr;
    if (!tokenizer || tok_str(tokenizer.get(), scan.text().constData(), &count, &found) != 0)
        return Spoken::tr("its words cannot be told apart"); // without memory only
    for (int i = 0; i < count; ++i)
        words->append(QString::fromUtf8(found[i]));
    return {};
}

} // namespace VelnoCtl
