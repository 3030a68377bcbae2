// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QStringList>

#include <algorithm>

/** How long the window takes to close, several times over: one of them may fall to a machine under load. */
class ClosingTimes
{
public:
    static constexpr int enough = 9;

    template <typename Close>
    void measure(Close close)
    {
        QElapsedTimer timer;
        timer.start();
        close();
        m_times << timer.elapsed();
    }

    /** Whether the one in the middle kept to 200 ms, and none waited for what the register was given. */
    bool areShort()
    {
        std::ranges::sort(m_times);
        return m_times.size() == enough && m_times.at(enough / 2) <= 200 && m_times.last() < 5000;
    }

    QString inWords() const
    {
        QStringList words;
        for (const qint64 time : m_times)
            words << QString::number(time);
        return words.join(u' ') + QString::fromLatin1(" ms");
    }

private:
    QList<qint64> m_times;
};
