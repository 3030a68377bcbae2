// SPDX-License-Identifier: Apache-2.0

#include "simulator/pictures/picture_module.h"

#include <QBuffer>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

using Layout = PictureLayout;

// Qt looks for a display in this folder even when it wants none. Where the environment names none, as in CI,
// it would complain, and leave one of its own behind.
QCoreApplication *makeApplication(int &argumentCount, char **arguments)
{
    constexpr const char *variable = "XDG_RUNTIME_DIR";
    const QTemporaryDir empty;
    const bool named = qEnvironmentVariableIsSet(variable);
    if (!named)
        qputenv(variable, empty.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    auto *const application = new QGuiApplication(argumentCount, arguments);
    if (!named)
        qunsetenv(variable);
    return application;
}

QString problem()
{
    return QFontDatabase::families().isEmpty()
               ? QCoreApplication::translate("Spoken",
                                             "no fonts are installed; Debian's fonts-dejavu-core is enough")
               : QString();
}

QFont letters()
{
    constexpr int height = 20; // of which a letter of DejaVu Sans Mono is 12 wide
    QFont font(u"DejaVu Sans Mono"_s);
    font.setStyleHint(QFont::Monospace);
    font.setPixelSize(height);
    return font;
}

/** Letter by letter, so that columns stay columns in whatever font there is. */
void drawLine(QPainter &painter, const QString &line, int top)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, line);
    qsizetype begin = 0;
    for (int left = Layout::margin; begin < line.size(); left += Layout::cellWidth) {
        const qsizetype end = finder.toNextBoundary();
        painter.drawText(QRect(left, top, Layout::cellWidth, Layout::cellHeight),
                         Qt::AlignCenter | Qt::TextDontClip, line.sliced(begin, end - begin));
        begin = end;
    }
}

QByteArray png(const QStringList &lines)
{
    const int width = 2 * Layout::margin + Layout::columns * Layout::cellWidth;
    const int height = 2 * Layout::margin + int(lines.size()) * Layout::cellHeight;
    QImage image(width, height, QImage::Format_Grayscale8);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        painter.setFont(letters());
        int top = Layout::margin;
        for (const QString &line : lines) {
            drawLine(painter, line, top);
            top += Layout::cellHeight;
        }
    }
    QByteArray file;
    QBuffer buffer(&file);
    return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG") ? file : QByteArray();
}

} // namespace

} // namespace Simulator

extern "C" Q_DECL_EXPORT const Simulator::PictureModule *velnoPictureModule()
{
    static constexpr Simulator::PictureModule module{Simulator::makeApplication, Simulator::problem,
                                                     Simulator::png};
    return &module;
}
