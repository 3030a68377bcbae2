/**
 * A program with a Qt application object of its own: reads the state of the register on the port given from
 * the window's thread and from a worker thread, and looks whether its own event loop still runs. With a
 * second argument its application object ends before the connection is closed, and the second visit has none.
 */
#include "velnoext.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

void connectAndRead(unsigned short port)
{
    int state = -1;
    int code = velnoext_initialize(5, "UB1234567890", "127.0.0.1", port, 20000);
    if (code == 0)
        code = velnoext_ecr_state(5000, &state);
    std::printf("code %d state %d\n", code, state);
}

void readOnce(unsigned short port)
{
    connectAndRead(port);
    velnoext_close_all();
}

int outliveTheApplication(int argc, char **argv, unsigned short port)
{
    {
        const QApplication application(argc, argv);
        connectAndRead(port);
    }
    std::printf("afterwards %d\n", velnoext_login(5000));
    velnoext_close_all();
    readOnce(port);
    std::printf("application %s\n", qApp ? "left" : "gone");
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const auto port = static_cast<unsigned short>(std::atoi(argv[1]));
    if (argc > 2)
        return outliveTheApplication(argc, argv, port);
    QApplication application(argc, argv);
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
