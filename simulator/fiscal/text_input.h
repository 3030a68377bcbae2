// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

namespace Simulator {

/**
 * The name of an item from the bytes of an application: UTF-8, whose last character may have been cut in the
 * middle; what is no UTF-8 is read as ISO-8859-9. Only printable characters are left, no space at either end.
 */
QString itemName(const QByteArray &bytes);

/** The text with spaces for every character that a printer would obey or cannot show. */
QString printable(const QString &text);

} // namespace Simulator
