#include "ExtDevice/gmp3/trust_anchors.h"
#include "pairing/gmp3ui.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>

#include <cstdio>

namespace {

/** Repeats on standard error what the status line shows, each text once it has been painted: for scripts. */
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
        if (event->type() == QEvent::Paint && text != m_last) {
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

    QApplication application(argc, argv);
    // They name the file that the settings of a pairing go to.
    QCoreApplication::setOrganizationName(QStringLiteral("dalmoriven"));
    QCoreApplication::setApplicationName(QStringLiteral("velno"));

    Gmp3UI window;
    if (qEnvironmentVariableIntValue("VELNO_TRACE_STATUS") == 1)
        new StatusTrace(window.findChild<QLabel *>(QStringLiteral("resultLabel")));
    window.show();
    const int status = QApplication::exec();
    window.endTest(status);
    return status;
}
