// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/printing_commands.h"

#include "translations/spoken.h"
#include "velnoctl/answers.h"
#include "velnoctl/arguments.h"
#include "velnoctl/exit_status.h"
#include "velnoctl/session.h"

#include <QTextCodec>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

/** A text in the encoding of the slip; null when it cannot be written in it. The library passes it on as it
 * is. */
QByteArray encoded(Session &session, const QString &text)
{
    const QTextCodec *const codec = QTextCodec::codecForName(session.remembered().encoding);
    if (!codec)
        return text.toUtf8(); // no slip has been begun: the library refuses the text
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QByteArray bytes = codec->fromUnicode(text.constData(), int(text.size()), &state);
    return state.invalidChars > 0 || bytes.contains('\0') ? QByteArray() : bytes;
}

Answer cannotBeWritten(Session &session, const QString &text)
{
    Answer answer;
    answer.code = WrongUsage;
    answer.text = Spoken::tr("\"%1\" cannot be written in %2; accepted are its letters, or another encoding")
                      .arg(text, QString::fromUtf8(session.remembered().encoding));
    return answer;
}

Answer added(int code)
{
    return answer(code, Spoken::tr("added to the slip"));
}

} // namespace

Answer encoding(Session &session, const Arguments &arguments)
{
    const QString &name = arguments.value(Kinds::encoding);
    const QByteArray bytes = name.toUtf8();
    const int code = session.device().ask(velnoext_printer_set_encoding, bytes.constData());
    if (code == 0)
        session.remembered().encoding = bytes;
    return answer(code, Spoken::tr("texts of the slip in %1").arg(name), {{u"encoding"_s, name}});
}

Answer addText(Session &session, const Arguments &arguments)
{
    const QString &typed = arguments.value(Kinds::text);
    const auto [a, b] = arguments.value(Kinds::style, {});
    VelnoTextStyle style{arguments.value(Kinds::size, 0), a, b};
    const QByteArray text = encoded(session, typed);
    if (text.isNull())
        return cannotBeWritten(session, typed);
    return added(session.device().ask(velnoext_printer_add_text, text.constData(), &style));
}

Answer addJustified(Session &session, const Arguments &arguments)
{
    const auto [a, b] = arguments.value(Kinds::style, {});
    VelnoTextStyle style{0, a, b};
    const QByteArray left = encoded(session, arguments.value(Kinds::left));
    const QByteArray right = encoded(session, arguments.value(Kinds::right));
    if (left.isNull() || right.isNull())
        return cannotBeWritten(session, arguments.value(left.isNull() ? Kinds::left : Kinds::right));
    return added(session.device().ask(velnoext_printer_add_justified_text, left.constData(),
                                      right.constData(), &style));
}

Answer feed(Session &session, const Arguments &arguments)
{
    const unsigned int count = arguments.value(Kinds::count);
    return added(session.device().ask(velnoext_printer_add_line_feed, count));
}

Answer printSlip(Session &session, const Arguments &arguments)
{
    const bool flag = arguments.value(Kinds::flag, false);
    const int code = session.device().command(velnoext_print_slip, flag);
    if (code == 0)
        session.remembered().encoding.clear(); // the next slip begins with its own
    return answer(code, Spoken::tr("slip printed"));
}

Answer xReport(Session &session, const Arguments &)
{
    return answer(session.device().ask(velnoext_x_report), Spoken::tr("X report printed"));
}

Answer zReport(Session &session, const Arguments &)
{
    return answer(session.device().ask(velnoext_z_report), Spoken::tr("Z report printed"));
}

} // namespace VelnoCtl
