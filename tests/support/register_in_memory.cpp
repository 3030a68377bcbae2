// SPDX-License-Identifier: Apache-2.0

#include "tests/support/register_in_memory.h"

namespace TestSupport {

namespace {

constexpr unsigned int atOnce = 0; // ms
constexpr int longestFrame = 4096; // announced length; the two bytes that announce it come on top

} // namespace

RegisterInMemory::RegisterInMemory(const QByteArray &serialNo)
    : responder(serialNo, QString::fromUtf8(VELNO_DEVELOPMENT_AUTHORITY "/register"), {}, faults)
{
    responder.begin();
    responder.session().link = &m_end;
}

void RegisterInMemory::meet(Velno::MemoryLink &link)
{
    Velno::MemoryLink::join(link, m_end);
    link.serveOtherSide = [this] { answerOne(); };
}

void RegisterInMemory::answerOne()
{
    QByteArray frame(longestFrame + 2, '\0');
    int size = longestFrame;
    if (responder.session().receive(atOnce, frame.data(), &size) != 0)
        return;
    requests << frame.first(size);
    const auto answer = responder.answer(responder.read(requests.constLast()).kind);
    isPaired = answer.paired;
    [[maybe_unused]] const int sent =
        responder.session().send(answer.frame.constData(), int(answer.frame.size()));
}

} // namespace TestSupport
