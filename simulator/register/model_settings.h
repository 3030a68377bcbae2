// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/fiscal_model.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <span>

/**
 * What an operator may set of the model: numbers at the start, by an option, or while the program runs, by a
 * line on standard input. One table for both.
 */
namespace Simulator {

struct SettingRow
{
    const char *name;  ///< of the option, behind "--", and of the line
    const char *value; ///< how the value is written in the help
    qint64 least;
    qint64 most;
    const char *help; ///< one line
    bool onRecord;    ///< what a journal says counts for more than what is set at the start

    /** @return false: not now; nothing has changed then */
    bool (*apply)(FiscalModel &model, qint64 value);
};

/** What the model is to be set to. */
struct ModelSetting
{
    const SettingRow *row = nullptr;
    qint64 value = 0;
};

std::span<const SettingRow> settingTable();

/** What is accepted as the value, for messages. */
QString settingRule(const SettingRow &row);

/** Nothing for a value that is not accepted. */
std::optional<ModelSetting> readSetting(const SettingRow &row, const QString &value);

/** Makes a model that begins what it was asked to be. @return an empty text, or what could not be set */
QString applySettings(const QList<ModelSetting> &settings, FiscalModel &model);

/** The lines of standard input that are accepted: NAME VALUE of the table, and paper on or off. */
QStringList settingLines();

struct SettingOutcome
{
    bool known = false; ///< whether the line is about the model
    QString error;      ///< what was wrong and what is accepted; nothing has changed then
};

/** Obeys a line of the operator. */
SettingOutcome obeySettingLine(const QString &line, FiscalModel &model);

} // namespace Simulator
