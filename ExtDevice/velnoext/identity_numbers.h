// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

/** The numbers that customers are known by. */
namespace Velno::Ext {

/** Whether an 11-digit identity number of a person is valid by its two check digits. */
bool isValidId(const QByteArray &id);

/** Whether a person's identity number is valid or stands for anybody. */
bool isPersonId(const QByteArray &id);

/** Whether a 10-digit tax number is valid by its check digit. */
bool isTaxNumber(const QByteArray &number);

} // namespace Velno::Ext
