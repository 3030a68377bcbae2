/**
 * A program with a Qt application object of its own: reads the state of the register on the port given from
 * the window's thread and from a worker thread, and looks whether its own event loop still runs.
 */
#include "velnoext.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

void readOnce(unsigned short port)
{
    int state = -1;
    int code = velnoext_initialize(5, "UB1234567890", "127.0.0.1", port, 20000);
    if (code == 0)
        code = velnoext_ecr_state(5000, &state);
    velnoext_close_all();
    std::printf("code %d state %d\n", code, state);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const auto port = static_cast<unsigned short>(std::atoi(argv[1]));
    readOnce(port);
    std::thread worker([port] {
        readOnce(port);
        QMetaObject::invokeMethod(qApp, [] { QTimer::singleShot(0, qApp, &QCoreApplication::quit); });
    });
    const int result = QCoreApplication::exec();
    worker.join();
    std::printf("application %s\n", qApp == &application ? "kept" : "lost");
    return result;
}
