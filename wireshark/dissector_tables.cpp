// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/file.h"
#include "ExtDevice/gmp3/protocol_table.h"

#include <QByteArray>
#include <QSaveFile>

#include <cstdio>
#include <cstring>

/** Writes the protocol table as Lua into the dissector, between its two marks. */

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

namespace {

const QByteArray begin = "-- BEGIN of what \"velno_dissector_tables\" writes from the protocol table\n"_ba;
const QByteArray end = "-- END of what \"velno_dissector_tables\" writes\n"_ba;

QByteArray quoted(const QByteArray &text)
{
    return '"' + text + '"';
}

QByteArray hex(const char *tag)
{
    return quoted(QByteArray(tag).toHex().toUpper());
}

const char *formName(FieldForm form)
{
    switch (form) {
    case FieldForm::Text:
        return "text";
    case FieldForm::Digits:
        return "digits";
    case FieldForm::Bytes:
        break;
    }
    return "bytes";
}

const char *typeName(ItemType type)
{
    constexpr const char *names[] = {"flag",  "int8",    "int16", "int32",  "int64",
                                     "bytes", "numbers", "lines", "record", "records"};
    return names[int(type)];
}

const char *presenceName(Presence presence)
{
    constexpr const char *names[] = {nullptr, "more-follows", "not-zero", "sale-open"};
    return names[int(presence)];
}

QByteArray luaMessages()
{
    QByteArray lua = "local messages = {}\nfor _, row in ipairs({\n";
    for (const MessageRow &row : messageTable())
        lua += "    {" + hex(row.request) + ", " + hex(row.response) + ", " + quoted(row.name) + "},\n";
    return lua + "}) do\n"
                 "    local message = {request = row[1], response = row[2], name = row[3]}\n"
                 "    messages[row[1]], messages[row[2]] = message, message\nend\n\n";
}

QByteArray luaTags()
{
    QByteArray lua = "local tags = {\n";
    QByteArray last;
    for (const auto &table : tagTables()) {
        for (const TagRow &row : table) {
            const QByteArray line = "    [" + hex(row.tag) + "] = {name = " + quoted(row.name) +
                                    ", form = " + quoted(formName(row.form)) + "},\n";
            if (line != last) // both public keys are one
                lua += line;
            last = line;
        }
    }
    return lua + "}\n\n";
}

QByteArray luaItems(std::span<const ItemRow> rows, int indent)
{
    if (rows.empty())
        return "{}"_ba;
    const QByteArray margin(indent, ' ');
    QByteArray lua = "{\n"_ba;
    for (const ItemRow &row : rows) {
        lua += margin + "    {name = " + quoted(row.name) + ", type = " + quoted(typeName(row.type));
        if (const char *const presence = presenceName(row.presence))
            lua += ", presence = " + quoted(presence);
        if (row.least != ItemRow{}.least || row.most != ItemRow{}.most)
            lua += ", least = " + QByteArray::number(row.least) + ", most = " + QByteArray::number(row.most);
        if (!row.parts.empty())
            lua += ", parts = " + luaItems(row.parts, indent + 4);
        lua += "},\n";
    }
    return lua + margin + '}';
}

QByteArray luaCommands()
{
    QByteArray lua = "local commands = {\n";
    for (const CommandForm &form : commandForms())
        lua += "    [" + QByteArray::number(form.code) + "] = {\n        name = " + quoted(form.name) +
               ",\n        request = " + luaItems(form.request, 8) +
               ",\n        answer = " + luaItems(form.answer, 8) + ",\n    },\n";
    return lua + "}\n";
}

/** The file with the table as it is; empty when the marks are not there. */
QByteArray withTables(const QByteArray &file)
{
    const qsizetype from = file.indexOf(begin);
    const qsizetype to = file.indexOf(end);
    if (from < 0 || to < from)
        return {};
    return file.first(from + begin.size()) + luaMessages() + luaTags() + luaCommands() + file.sliced(to);
}

int fail(const char *path, const char *reason)
{
    std::fprintf(stderr, "velno_dissector_tables: %s %s\n", path, reason);
    return 1;
}

bool write(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
}

} // namespace

int main(int argc, char *argv[])
{
    const bool checks = argc == 3 && std::strcmp(argv[1], "--check") == 0;
    if (argc != 2 && !checks) {
        std::fputs("Usage: velno_dissector_tables [--check] velno.lua\n", stderr);
        return 64;
    }
    const char *const path = argv[argc - 1];
    QByteArray before;
    if (!Velno::readData(QString::fromLocal8Bit(path), &before))
        return fail(path, "cannot be read");
    const QByteArray after = withTables(before);
    if (after.isEmpty())
        return fail(path, "lacks the marks between which the tables stand");
    if (after == before)
        return 0;
    if (checks)
        return fail(path, "does not say what the protocol table says: build the target dissector");
    return write(QString::fromLocal8Bit(path), after) ? 0 : fail(path, "cannot be written");
}
