// SPDX-License-Identifier: Apache-2.0

/**
 * A program with a Qt application object of its own: reads the state of the register on the port given from
 * the window's thread and from a worker thread, and looks whether its own event loop still runs. A second
 * argument chooses another course: "outlive", its application object ends before the connection is closed,
 * and the second visit has none; "pass-on", each step is on another thread while application objects come and
 * go.
 */
#include "velnoext.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

void read()
{
    int state = -1;
    const int code = velnoext_ecr_state(5000, &state);
    std::printf("code %d state %d\n", code, state);
}

void connectAndRead(unsigned short port)
{
    if (const int code = velnoext_initialize(5, "UB1234567890", "127.0.0.1", port, 20000); code != 0)
        std::printf("not connected: code %d\n", code);
    else
        read();
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
    read();
    velnoext_close_all();
    readOnce(port);
    std::printf("application %s\n", qApp ? "left" : "gone");
    return 0;
}

template <typename Step>
void onAnotherThread(const Step &step)
{
    std::thread(step).join();
}

int passOn(int argc, char **argv, unsigned short port)
{
    onAnotherThread([port] { connectAndRead(port); });
    {
        const QApplication application(argc, argv);
        read();
        onAnotherThread(velnoext_close);
    }
    {
        const QApplication application(argc, argv);
        onAnotherThread([port] { connectAndRead(port); });
    }
    read();
    onAnotherThread(velnoext_close_all);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const auto port = static_cast<unsigned short>(std::atoi(argv[1]));
    if (argc > 2 && std::strcmp(argv[2], "pass-on") == 0)
        return passOn(argc, argv, port);
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
