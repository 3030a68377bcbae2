// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/pictures.h"

#include "translations/spoken.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

using namespace Qt::StringLiterals;

namespace Simulator {

const PictureModule *loadPictureModule(QString *problem)
{
    QLibrary library(QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../" VELNO_MODULE_FOLDER
                                                                              "/velno-pictures.so"_s));
    const auto entry = reinterpret_cast<PictureModuleEntry>(library.resolve(pictureModuleEntry));
    if (!entry) {
        *problem = Spoken::tr("what draws cannot be loaded: %1").arg(library.errorString());
        return nullptr;
    }
    return entry();
}

} // namespace Simulator
