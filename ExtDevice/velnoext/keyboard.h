// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QVector>

/** Keys that a register is to press on its own keyboard, by their numbers in Qt::Key. */
namespace Velno::Ext {

/** The keys that start a sale, from an idle register's state (1 or 7). */
QVector<int> saleKeys(int state);
QVector<int> invoiceSaleKeys(int state);

/** The key that pays or ends a sale: F10 for type 0, otherwise F11. */
int paymentKey(int type);

/** The keys that type an amount in kuruş, of which 12 digits are sent, and pay it. */
QVector<int> paymentKeys(int type, quint64 amount);

/** The keys that cancel a sale. */
QVector<int> cancelKeys();

/** What the register's state is to be, with two numbers whose meaning is the register's. */
struct StateChange
{
    int state;
    int step;
    int extra;
};

/** The request that has keys pressed. @param answerWanted  whether the register is to answer */
QByteArray changeStateRequest(const StateChange &change, const QVector<int> &keys, bool answerWanted);

} // namespace Velno::Ext
