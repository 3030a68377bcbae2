// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/trust_anchors.h"
#include "pairing/command_line.h"
#include "pairing/gmp3ui.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

/** Repeats on standard error what the status line shows, for scripts: each text once it has been painted, or
 * when the next one replaces it before that. */
class StatusTrace : public QObject
{
public:
    explicit StatusTrace(QLabel *label)
        : QObject(label)
    {
        label->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const QString text = static_cast<QLabel *>(watched)->text();
        // A workflow's text arrives as a MetaCall; the text before it still stands then.
        if ((event->type() == QEvent::Paint || event->type() == QEvent::MetaCall) && text != m_last) {
            std::fprintf(stderr, "status: %s\n", text.toUtf8().constData());
            m_last = text;
        }
        return false;
    }

private:
    QString m_last;
};

} // namespace

int main(int argc, char *argv[])
{
    Velno::GMP::warnOfDevelopmentAuthority("velno-pairing");
    if (const std::optional<int> status = shownInsteadOfAWindow(argc, argv))
        return *status;

    QApplication application(argc, argv);
    // They name the file that the settings of a pairing go to.
    QCoreApplication::setOrganizationName(u"dalmoriven"_s);
    QCoreApplication::setApplicationName(u"velno"_s);

    Gmp3UI window;
    if (qEnvironmentVariableIntValue("VELNO_TRACE_STATUS") == 1)
        new StatusTrace(window.findChild<QLabel *>(u"resultLabel"_s));
    window.show();
    return QApplication::exec();
}
