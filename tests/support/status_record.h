// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QEvent>
#include <QLabel>
#include <QStringList>

/** Every text that a status line shows, in order, also those that the next one replaces before it is painted.
 */
class StatusRecord : public QObject
{
public:
    explicit StatusRecord(QLabel *label)
        : m_label(label)
    {
        label->installEventFilter(this);
    }

    QStringList texts()
    {
        note();
        return m_texts;
    }

    /** A text posted from another thread is an event, before which the one before it is still there. */
    bool eventFilter(QObject *, QEvent *) override
    {
        note();
        return false;
    }

private:
    void note()
    {
        if (const QString text = m_label->text();
            !text.isEmpty() && (m_texts.isEmpty() || m_texts.constLast() != text))
            m_texts << text;
    }

    QLabel *m_label;
    QStringList m_texts;
};
