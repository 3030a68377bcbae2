// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <functional>
#include <vector>

/** Ways to every cause of the device library that a call in this process can end with. */
namespace TestSupport {

constexpr quint16 relayPort = 50902;

/** A cause, the result that it comes with, and a call that ends so. */
struct Way
{
    int cause;
    int result;
    QByteArray how;
    std::function<int()> ask;
    bool pairs = false; ///< with a register that has a key
};

/** Connecting and pairing fail, or a call before it sends anything. */
std::vector<Way> waysOfConnections();

/** No answer comes, or one that is damaged, or that says no. */
std::vector<Way> waysOfAnswers();

} // namespace TestSupport
