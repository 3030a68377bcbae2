// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QStringList>

/** What the window shows during a device test: of a register in state 7, with Z number 124 and paper. */
namespace TestSupport {

using namespace Qt::StringLiterals;

inline const QStringList connecting{u"Cihaza bağlanılıyor..."_s};
inline const QStringList connected = connecting + QStringList{u"Cihaza bağlanıldı."_s};
inline const QStringList knowsState = connected + QStringList{u"Cihaz durumu: 7"_s};
inline const QStringList knowsZ = knowsState + QStringList{u"Z no: 124"_s};
inline const QStringList endOfTest{u"Yazıcıda kağıt var."_s, u"Cihaz testi tamamlandı."_s};
inline const QStringList complete = knowsZ + endOfTest;
inline const QStringList completeWithoutPaper = knowsZ + QStringList{u"Yazıcıda kağıt yok."_s} + endOfTest;

inline const QString connectionFailed = u"Bağlantı hatası: %1"_s;
inline const QString stateFailed = u"Cihaz durumu sorgulanamadı: %1"_s;
inline const QString zFailed = u"Z no sorgulanamadı: %1"_s;
inline const QString paperFailed = u"Kağıt durumu sorgulanamadı: %1"_s;

} // namespace TestSupport
