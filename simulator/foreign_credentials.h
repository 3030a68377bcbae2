#pragma once

#include <QByteArray>

namespace Simulator {

/** A certificate and its private key, PEM. */
struct Credentials
{
    QByteArray certificate;
    QByteArray privateKey;
};

/** A register's credentials under an authority made for this call, in memory alone; empty on failure. */
Credentials makeForeignCredentials();

} // namespace Simulator
