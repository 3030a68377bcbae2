#pragma once

#include "simulator/fiscal_model.h"

#include <QString>
#include <QStringList>

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
    void (*apply)(FiscalModel &model, qint64 value);
};

std::span<const SettingRow> settingTable();

/** What is accepted as the value, for messages. */
QString settingRule(const SettingRow &row);

/** @return whether the value was accepted; nothing changes otherwise */
bool changeSetting(const SettingRow &row, const QString &value, FiscalModel &model);

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
