#pragma once

#include <QByteArray>

/** What the end of a sale is judged by. */
namespace Velno::Ext {

/** Whether a 10-digit tax number is valid by its check digit. */
bool isTaxNumber(const QByteArray &number);

} // namespace Velno::Ext
