#pragma once
// Dial-up connections through the Remote Access Service of Windows, whose
// library rasapi32.dll is loaded at run time: a Windows without it behaves
// like a desktop without dial-up.

#include "platform/seams.h"

#include <QtGlobal>

#include <functional>

namespace platform {

// One record of the service's connection table (the oldest layout the service
// accepts: 412 bytes in a 32-bit program, 424 in a 64-bit one).
struct RasConnectionRecord {
    quint32 size = sizeof(RasConnectionRecord);
    quintptr handle = 0;
    char entryName[257] = {};
    char deviceType[17] = {};
    char deviceName[129] = {};
};
static_assert(sizeof(RasConnectionRecord) == (sizeof(void *) == 4 ? 412 : 424));

// The service's result when the table is too small; the size it needs is then
// in the size argument.
constexpr quint32 RasBufferTooSmall = 603;

// The two calls of the service. Empty functions: no service.
struct RasApi {
    std::function<quint32(RasConnectionRecord *table, quint32 *tableBytes, quint32 *count)> enumConnections;
    std::function<quint32(quintptr handle)> hangUp;
};

// The service's calls from rasapi32.dll; empty where it is missing or not Windows.
RasApi loadRasApi();

class RasDialUp : public DialUp {
public:
    RasDialUp();
    explicit RasDialUp(RasApi api);
    // Lists the active connections in a table of 256 records, grown when the
    // service asks for more; returns the service's own result code.
    qint32 enumConnections(QList<DialUpConnection> &connections) override;
    qint32 hangUp(quintptr handle) override;

private:
    RasApi m_api;
};

} // namespace platform
