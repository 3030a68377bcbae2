// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QStringList>

QT_FORWARD_DECLARE_CLASS(QCoreApplication)

/**
 * Prints as pictures. They are drawn by a module that is loaded when somebody wants them: what draws, Qt Gui,
 * takes a register that draws nothing longer to start and more memory.
 */
namespace Simulator {

/** Where letters stand, in pixels: each in a cell of its own. */
struct PictureLayout
{
    static constexpr int columns = 42; ///< of the paper
    static constexpr int cellWidth = 12;
    static constexpr int cellHeight = 24;
    static constexpr int margin = 24; ///< on all four sides
};

/** What the module has. */
struct PictureModule
{
    /** Has to be made before anything is drawn, in place of a QCoreApplication; needs no display. */
    QCoreApplication *(*makeApplication)(int &argumentCount, char **arguments);

    /** Why nothing can be drawn; empty when nothing is wrong. */
    QString (*problem)();

    /** The lines of a print, black on white, as a PNG file; empty when it cannot be made. */
    QByteArray (*png)(const QStringList &lines);
};

/** The function that the module exports. */
using PictureModuleEntry = const PictureModule *(*)();
constexpr char pictureModuleEntry[] = "velnoPictureModule";

} // namespace Simulator
