// SPDX-License-Identifier: Apache-2.0

#include "till/open_till.h"
#include "till/questions.h"

#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

int Velno::Receipts::handOutText(const QByteArray &words, char **text)
{
    // From the C library, so that a caller who frees it himself does no harm.
    char *const copy = strdup(words.constData());
    if (!copy)
        return refusedForMemory();
    *text = copy;
    return VelnoTillResult_Done;
}

int velnotill_message(const VelnoTillOutcome *outcome, const char *language, char **text)
{
    // Callbacks may call it, too.
    if (!outcome || !text)
        return refused(VelnoTillResult_NullArgument);
    if (!hasRoom(*outcome))
        return refused(VelnoTillResult_BadArgument,
                       u"outcome: size %1 is not that of VelnoTillOutcome"_s.arg(outcome->size));
    return handOutText(message(orderFrom(*outcome), languageOf(language)).toUtf8(), text);
}

const char *velnotill_result_name(int result)
{
    return wordOf(resultWords(), result).name;
}

const char *velnotill_result_text(int result, const char *language)
{
    return wordOf(resultWords(), result).in(languageOf(language));
}

const char *velnotill_kind_name(int kind)
{
    return wordOf(kindWords(), kind).name;
}

const char *velnotill_state_name(int state)
{
    return wordOf(stateWords(), state).name;
}

const char *velnotill_state_text(int state, const char *language)
{
    return wordOf(stateWords(), state).in(languageOf(language));
}

const char *velnotill_question_name(int question)
{
    return wordOf(questionWords(), question).name;
}

const char *velnotill_answer_name(int answer)
{
    return wordOf(answerWords(), answer).name;
}

const char *velnotill_paper_name(int paper)
{
    return wordOf(paperWords(), paper).name;
}

const char *velnotill_stage_name(int stage)
{
    return wordOf(stageWords(), stage).name;
}

const char *velnotill_stage_text(int stage, const char *language)
{
    return wordOf(stageWords(), stage).in(languageOf(language));
}

void velnotill_free_text(char *text)
{
    std::free(text);
}
