#include "ExtDevice/gmp3/trust_anchors.h"
#include "pairing/gmp3ui.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    Velno::GMP::warnOfDevelopmentAuthority("velno-pairing");

    QApplication application(argc, argv);
    // They name the file that the settings of a pairing go to.
    QCoreApplication::setOrganizationName(QStringLiteral("dalmoriven"));
    QCoreApplication::setApplicationName(QStringLiteral("velno"));

    Gmp3UI window;
    window.show();
    return QApplication::exec();
}
