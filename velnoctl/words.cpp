#include "velnoctl/words.h"

#include <histedit.h>

#include <memory>
#include <optional>

namespace VelnoCtl {

namespace {

struct EndTokenizer
{
    void operator()(Tokenizer *tokenizer) const noexcept { tok_end(tokenizer); }
};

/** The line up to its comment, which the tokenizer does not know; nothing when it ends with a backslash. */
std::optional<QByteArray> withoutComment(const QByteArray &line)
{
    char quote = 0;
    bool isBetweenWords = true;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const char c = line.at(i);
        if (c == '#' && isBetweenWords)
            return line.first(i);
        isBetweenWords = quote == 0 && (c == ' ' || c == '\t');
        if (c == quote)
            quote = 0;
        else if (quote == 0 && (c == '\'' || c == '"'))
            quote = c;
        else if (c == '\\' && quote != '\'' && ++i == line.size())
            return std::nullopt; // the tokenizer would make an empty word of it
    }
    return line;
}

} // namespace

bool splitWords(const QByteArray &line, QStringList *words)
{
    words->clear();
    const std::optional<QByteArray> text = withoutComment(line);
    if (!text || text->contains('\0') || !text->isValidUtf8())
        return false;
    const std::unique_ptr<Tokenizer, EndTokenizer> tokenizer(tok_init(nullptr));
    int count = 0;
    const char **found = nullptr;
    if (!tokenizer || tok_str(tokenizer.get(), text->constData(), &count, &found) != 0)
        return false;
    for (int i = 0; i < count; ++i)
        words->append(QString::fromUtf8(found[i]));
    return true;
}

} // namespace VelnoCtl
