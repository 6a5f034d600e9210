// The Windows dial-up seam's own logic, against a stand-in for the service.

#include "app/modMain.h"
#include "platform/ras_dialup.h"
#include "support/fakes.h"
#include "support/test_main.h"

#include <QTest>

#include <cstring>

using platform::RasConnectionRecord;

namespace {

constexpr quint32 Record = sizeof(RasConnectionRecord);

// A dial-up service with named connections (handles 101, 102, ...) that
// wants a table of at least `needed` records and may fail.
struct FakeRas {
    QList<QByteArray> names;
    quint32 needed = 0;
    quint32 failure = 0;
    quint32 hangUpResult = 0;
    QList<quint32> offered; // table bytes offered at each call
    QList<quintptr> hungUp;

    platform::RasApi api()
    {
        platform::RasApi api;
        api.enumConnections = [this](RasConnectionRecord *table, quint32 *bytes, quint32 *count) -> quint32 {
            offered.append(*bytes);
            if (table[0].size != Record)
                return 632; // the service's answer to a record size it does not know
            const quint32 want = std::max<quint32>(needed, quint32(names.size())) * Record;
            if (*bytes < want) {
                *bytes = want;
                return platform::RasBufferTooSmall;
            }
            if (failure)
                return failure;
            for (qsizetype i = 0; i < names.size(); ++i) {
                table[i].handle = quintptr(101 + i);
                std::memcpy(table[i].entryName, names[i].constData(), size_t(names[i].size()));
            }
            *count = quint32(names.size());
            return 0;
        };
        api.hangUp = [this](quintptr handle) {
            hungUp.append(handle);
            return hangUpResult;
        };
        return api;
    }
};

} // namespace

class DialUpTest : public QObject {
    Q_OBJECT
private slots:
    void hangUpThroughTheService_data();
    void hangUpThroughTheService();
};

void DialUpTest::hangUpThroughTheService_data()
{
    QTest::addColumn<bool>("present");
    QTest::addColumn<quint32>("needed");
    QTest::addColumn<quint32>("failure");
    QTest::addColumn<QList<quint32>>("offered");
    QTest::addColumn<qint32>("lastResult");
    QTest::addColumn<QList<quintptr>>("hungUp");
    const QList<quintptr> both{101, 102};
    QTest::newRow("no service") << false << 0u << 0u << QList<quint32>() << 0 << QList<quintptr>();
    QTest::newRow("table big enough") << true << 0u << 0u << QList<quint32>{256 * Record} << 668 << both;
    QTest::newRow("table grown once") << true << 300u << 0u << QList<quint32>{256 * Record, 300 * Record} << 668
                                      << both;
    QTest::newRow("service fails") << true << 0u << 623u << QList<quint32>{256 * Record} << 623
                                   << QList<quintptr>();
    QTest::newRow("service asks for an absurd table")
        << true << 0x7fffffffu / Record << 0u << QList<quint32>{256 * Record} << 603 << QList<quintptr>();
}

// Two named connections: both are hung up and the hang-up's result is kept; a
// failure of the service is kept instead, and nothing is hung up.
void DialUpTest::hangUpThroughTheService()
{
    QFETCH(bool, present);
    QFETCH(quint32, needed);
    QFETCH(quint32, failure);
    QFETCH(QList<quint32>, offered);
    QFETCH(qint32, lastResult);
    QFETCH(QList<quintptr>, hungUp);
    fakes::TestSeams seams;
    FakeRas service;
    service.names = {"Office", "Home ISP"};
    service.needed = needed;
    service.failure = failure;
    service.hangUpResult = 668;
    platform::RasDialUp dialUp(present ? service.api() : platform::RasApi());
    platform::install(&dialUp);
    HangUpRas();
    platform::install(static_cast<platform::DialUp *>(nullptr));
    QCOMPARE(service.offered, offered);
    QCOMPARE(service.hungUp, hungUp);
    QCOMPARE(startup().LastRasResult, lastResult);
    QVERIFY(seams.boxes.shown().isEmpty());
}

TOLMARA_REGISTER_TEST(DialUpTest)
#include "tst_dialup.moc"
