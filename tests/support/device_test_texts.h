#pragma once

#include <QStringList>

/** What the window shows during a device test: of a register in state 7, with Z number 124 and paper. */
namespace TestSupport {

inline const QStringList connecting{QStringLiteral("Cihaza bağlanılıyor...")};
inline const QStringList connected = connecting + QStringList{QStringLiteral("Cihaza bağlanıldı.")};
inline const QStringList knowsState = connected + QStringList{QStringLiteral("Cihaz durumu: 7")};
inline const QStringList knowsZ = knowsState + QStringList{QStringLiteral("Z no: 124")};
inline const QStringList endOfTest{QStringLiteral("Yazıcıda kağıt var."),
                                   QStringLiteral("Cihaz testi tamamlandı.")};
inline const QStringList complete = knowsZ + endOfTest;
inline const QStringList completeWithoutPaper =
    knowsZ + QStringList{QStringLiteral("Yazıcıda kağıt yok.")} + endOfTest;

inline const QString connectionFailed = QStringLiteral("Bağlantı hatası: %1");
inline const QString stateFailed = QStringLiteral("Cihaz durumu sorgulanamadı: %1");
inline const QString zFailed = QStringLiteral("Z no sorgulanamadı: %1");
inline const QString paperFailed = QStringLiteral("Kağıt durumu sorgulanamadı: %1");

} // namespace TestSupport
