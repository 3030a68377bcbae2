// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/raw_commands.h"

#include "translations/spoken.h"
#include "velnoctl/answers.h"
#include "velnoctl/arguments.h"
#include "velnoctl/session.h"

using namespace Qt::StringLiterals;

namespace VelnoCtl {

Answer sendRaw(Session &session, const Arguments &arguments)
{
    const QByteArray &bytes = arguments.value(Kinds::hex);
    const int size = int(bytes.size());
    const int code = session.device().ask(velnoext_send_data, bytes.constData(), size);
    session.device().expectStrayAnswer();
    return answer(code, Spoken::tr("sent %1 bytes").arg(size), {{u"bytes"_s, size}});
}

Answer getRaw(Session &session, const Arguments &arguments)
{
    const QByteArray &frame = arguments.value(Kinds::hex);
    QByteArray plain(frame.size(), '\0'); // never longer than the frame that it came in
    int size = int(plain.size());
    const int code =
        session.device().ask(velnoext_get_data, frame.constData(), int(frame.size()), plain.data(), &size);
    const QString hex = QString::fromLatin1(plain.first(code == 0 ? size : 0).toHex().toUpper());
    return answer(code, hex, {{u"hex"_s, hex}});
}

} // namespace VelnoCtl
