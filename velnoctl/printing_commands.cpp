#include "velnoctl/printing_commands.h"

#include "velnoctl/answers.h"
#include "velnoctl/exit_status.h"
#include "velnoctl/numbers.h"
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
        return text.toUtf8(); // there is no slip yet, which the library will say
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QByteArray bytes = codec->fromUnicode(text.constData(), int(text.size()), &state);
    return state.invalidChars > 0 || bytes.contains('\0') ? QByteArray() : bytes;
}

Answer cannotBeWritten(Session &session, const QString &text)
{
    Answer answer;
    answer.code = WrongUsage;
    answer.text = u"\"%1\" cannot be written in %2; accepted are its letters, or another encoding"_s.arg(
        text, QString::fromUtf8(session.remembered().encoding));
    return answer;
}

VelnoTextStyle styleFrom(const QString &size, const QString &style)
{
    return {numberFrom<int>(size).value_or(0), style.contains(u'a'), style.contains(u'b')};
}

Answer added(int code)
{
    return answer(code, u"added to the slip"_s);
}

} // namespace

Answer encoding(Session &session, const QStringList &arguments)
{
    const QString &name = arguments.first();
    const QByteArray bytes = name.toUtf8();
    const int code = session.device().ask(velnoext_printer_set_encoding, bytes.constData());
    if (code == 0)
        session.remembered().encoding = bytes;
    return answer(code, u"texts of the slip in %1"_s.arg(name), {{u"encoding"_s, name}});
}

Answer addText(Session &session, const QStringList &arguments)
{
    VelnoTextStyle style = styleFrom(arguments.at(1), arguments.at(2));
    const QByteArray text = encoded(session, arguments.first());
    if (text.isNull())
        return cannotBeWritten(session, arguments.first());
    return added(session.device().ask(velnoext_printer_add_text, text.constData(), &style));
}

Answer addJustified(Session &session, const QStringList &arguments)
{
    VelnoTextStyle style = styleFrom({}, arguments.at(2));
    const QByteArray left = encoded(session, arguments.at(0));
    const QByteArray right = encoded(session, arguments.at(1));
    if (left.isNull() || right.isNull())
        return cannotBeWritten(session, arguments.at(left.isNull() ? 0 : 1));
    return added(session.device().ask(velnoext_printer_add_justified_text, left.constData(),
                                      right.constData(), &style));
}

Answer feed(Session &session, const QStringList &arguments)
{
    const unsigned int count = numberFrom<quint32>(arguments.first()).value_or(0);
    return added(session.device().ask(velnoext_printer_add_line_feed, count));
}

Answer printSlip(Session &session, const QStringList &arguments)
{
    const bool flag = arguments.first() == "yes"_L1;
    const int code = session.device().command(velnoext_print_slip, flag);
    if (code == 0)
        session.remembered().encoding.clear(); // the next slip begins with its own
    return answer(code, u"slip printed"_s);
}

Answer xReport(Session &session, const QStringList &)
{
    return answer(session.device().ask(velnoext_x_report), u"X report printed"_s);
}

Answer zReport(Session &session, const QStringList &)
{
    return answer(session.device().ask(velnoext_z_report), u"Z report printed"_s);
}

} // namespace VelnoCtl
