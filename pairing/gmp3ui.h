#pragma once

#include <QByteArray>
#include <QPair>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>

QT_BEGIN_NAMESPACE
class Ui_Gmp3UI;
QT_END_NAMESPACE

/**
 * The pairing window: collects what a pairing needs, runs it on a thread of the global pool and shows one
 * line of status. Widgets are touched on the GUI thread alone; a workflow reaches the window only through
 * setText() and setButtonsEnabled(), which are safe from any thread and after the window is gone.
 */
class Gmp3UI : public QWidget
{
    Q_OBJECT

public:
    explicit Gmp3UI(QWidget *parent = nullptr);
    ~Gmp3UI() override;
};
