// SPDX-License-Identifier: Apache-2.0

#include "simulation/clerk.h"

using namespace Qt::StringLiterals;
using namespace Simulator;

namespace Simulation {

namespace {

constexpr qint64 price = 1000'00;      // kuruş, more than any line of an order comes to
constexpr qint64 seenDifference = 100; // kuruş, more than the roundings of all lines of an order

ItemRequest item()
{
    ItemRequest request;
    request.price = price;
    request.quantity = 1000;
    request.section = 1;
    request.name = Clerk::key().toUtf8();
    return request;
}

} // namespace

QString Clerk::key()
{
    return u"elden"_s;
}

bool Clerk::begin(const Mishap &mishap)
{
    const MishapKind kind = mishap.row->kind;
    const bool isHis =
        kind == MishapKind::HandSells || kind == MishapKind::HandDeletes || kind == MishapKind::HandSale;
    if (!isHis || !m_register.model().seller()) // in another state its keyboard sells nothing
        return isHis;
    if (isSelling() && isHisOpen())
        return true; // he is at work
    const bool isEmpty = m_register.model().saleTotals().items == 0;
    if (kind == MishapKind::HandDeletes)
        deleteLine();
    else if (kind == MishapKind::HandSells && !isEmpty)
        sellLine();
    else // what is empty is nobody's, as far as he can see
        sellForHimself(mishap.number);
    look();
    return true;
}

void Clerk::sellLine()
{
    if (m_register.model().seller()->add({item()}) == NotRefused)
        m_truth.noteHand();
}

void Clerk::deleteLine()
{
    const qint64 before = m_register.model().saleTotals().total;
    if (m_register.model().seller()->removeLast() != NotRefused)
        return;
    m_truth.noteHand();
    if (before - m_register.model().saleTotals().total < seenDifference)
        m_truth.noteUnseen(); // a remark
}

/** Whatever else is open is cancelled. */
void Clerk::sellForHimself(int milliseconds)
{
    FiscalModel &model = m_register.model();
    Till &till = *model.seller();
    if (!till.goTo(Screen::Idle) || !till.goTo(Screen::Sale))
        return;
    m_own = model.saleReference();
    m_ownAt = &model;
    m_ownUntil = m_clock.passed() + milliseconds;
    m_isOwnClosed = milliseconds % 4 < 2;
    if (till.add({item()}) != NotRefused)
        m_isOwnClosed = false;
}

void Clerk::easeUp()
{
    if (isSelling() && m_clock.passed() >= m_ownUntil)
        endSale();
}

void Clerk::repair()
{
    if (isSelling())
        endSale();
}

/** Unless something else has ended it. Where it cannot be ended now he tries again. */
void Clerk::endSale()
{
    if (Till *const till = m_register.model().seller(); till && isHisOpen()) {
        till->goTo(m_isOwnClosed ? Screen::Sale : Screen::Idle);
        if (m_isOwnClosed)
            till->press({keyF10});
    }
    look();
    if (!isHisOpen())
        m_own = {};
}

bool Clerk::isHisOpen()
{
    return m_ownAt == &m_register.model() && m_own == m_ownAt->saleReference();
}

void Clerk::look()
{
    m_truth.look(m_register.model());
    if (isSelling() && isHisOpen())
        m_truth.noteLine(key());
}

} // namespace Simulation
