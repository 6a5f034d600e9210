#include "platform/ras_dialup.h"

#include <QLibrary>

#include <vector>

namespace platform {
namespace {

constexpr quint32 FirstTableRecords = 256;
constexpr int MaxTableGrowths = 4; // a service that keeps asking for more is given up on
constexpr quint32 MaxTableBytes = 16 * 1024 * 1024;

quint32 tableBytes(const std::vector<RasConnectionRecord> &table)
{
    return quint32(table.size() * sizeof(RasConnectionRecord));
}

} // namespace

RasApi loadRasApi()
{
    RasApi api;
#ifdef Q_OS_WIN
    using EnumConnections = unsigned long(__stdcall *)(void *, unsigned long *, unsigned long *);
    using HangUp = unsigned long(__stdcall *)(void *);
    static QLibrary library(QStringLiteral("rasapi32"));
    const auto enumConnections = reinterpret_cast<EnumConnections>(library.resolve("RasEnumConnectionsA"));
    const auto hangUp = reinterpret_cast<HangUp>(library.resolve("RasHangUpA"));
    if (!enumConnections || !hangUp)
        return api;
    api.enumConnections = [enumConnections](RasConnectionRecord *table, quint32 *bytes, quint32 *count) {
        unsigned long tableSize = *bytes;
        unsigned long found = 0;
        const unsigned long result = enumConnections(table, &tableSize, &found);
        *bytes = quint32(tableSize);
        *count = quint32(found);
        return quint32(result);
    };
    api.hangUp = [hangUp](quintptr handle) { return quint32(hangUp(reinterpret_cast<void *>(handle))); };
#endif
    return api;
}

RasDialUp::RasDialUp() : m_api(loadRasApi()) {}

RasDialUp::RasDialUp(RasApi api) : m_api(std::move(api)) {}

qint32 RasDialUp::enumConnections(QList<DialUpConnection> &connections)
{
    connections.clear();
    if (!m_api.enumConnections)
        return 0;
    std::vector<RasConnectionRecord> table(FirstTableRecords);
    quint32 bytes = tableBytes(table);
    quint32 count = 0;
    quint32 result = m_api.enumConnections(table.data(), &bytes, &count);
    for (int growth = 0; result == RasBufferTooSmall && bytes > tableBytes(table) && bytes <= MaxTableBytes
                         && growth < MaxTableGrowths;
         ++growth) {
        table.assign((bytes + sizeof(RasConnectionRecord) - 1) / sizeof(RasConnectionRecord), RasConnectionRecord());
        bytes = tableBytes(table);
        count = 0;
        result = m_api.enumConnections(table.data(), &bytes, &count);
    }
    if (result != 0)
        return qint32(result);
    for (quint32 i = 0; i < count && i < table.size(); ++i)
        connections.append({table[i].handle, QByteArray(table[i].entryName, sizeof table[i].entryName)});
    return 0;
}

qint32 RasDialUp::hangUp(quintptr handle) { return m_api.hangUp ? qint32(m_api.hangUp(handle)) : 0; }

} // namespace platform
