// The Windows dial-up seam's own logic, against a stand-in for the service.

#include "app/modMain.h"
#include "platform/ras_dialup.h"
#include "support/fakes.h"
#include "support/test_main.h"

#include <QTest>

#include <cstring>

using platform::RasConnectionRecord;

constexpr quint32 Record = sizeof(RasConnectionRecord);

class DialUpTest : public QObject {
    Q_OBJECT
private slots:
    void hangUpThroughTheService_data();
    void hangUpThroughTheService();
};

// The service holds "Office" and "Home ISP" (handles 101, 102), wants a table
// of at least `needed` records and may fail; a hang-up answers 668.
void DialUpTest::hangUpThroughTheService_data()
{
    QTest::addColumn<bool>("present");
    QTest::addColumn<quint32>("needed");
    QTest::addColumn<quint32>("failure");
    QTest::addColumn<QList<quint32>>("offered"); // table bytes at each call
    QTest::addColumn<qint32>("lastResult");
    QTest::addColumn<QList<quintptr>>("hungUp");
    const QList<quintptr> both{101, 102};
    QTest::newRow("no service") << false << 0u << 0u << QList<quint32>() << 0 << QList<quintptr>();
    QTest::newRow("table big enough") << true << 0u << 0u << QList<quint32>{256 * Record} << 668 << both;
    QTest::newRow("table grown") << true << 300u << 0u << QList<quint32>{256 * Record, 300 * Record} << 668 << both;
    QTest::newRow("service fails") << true << 0u << 623u << QList<quint32>{256 * Record} << 623 << QList<quintptr>();
    QTest::newRow("absurd table asked for")
        << true << 0x7fffffffu / Record << 0u << QList<quint32>{256 * Record} << 603 << QList<quintptr>();
}

void DialUpTest::hangUpThroughTheService()
{
    QFETCH(bool, present);
    QFETCH(quint32, needed);
    QFETCH(quint32, failure);
    QFETCH(QList<quint32>, offered);
    QFETCH(qint32, lastResult);
    QFETCH(QList<quintptr>, hungUp);
    fakes::TestSeams seams;
    const QList<QByteArray> names{"Office", "Home ISP"};
    QList<quint32> sizes;
    QList<quintptr> handles;
    platform::RasApi service;
    service.enumConnections = [&](RasConnectionRecord *table, quint32 *bytes, quint32 *count) -> quint32 {
        sizes.append(*bytes);
        if (table[0].size != Record)
            return 632; // the service's answer to a record size it does not know
        if (*bytes < std::max<quint32>(needed, 2) * Record) {
            *bytes = std::max<quint32>(needed, 2) * Record;
            return platform::RasBufferTooSmall;
        }
        for (qsizetype i = 0; i < names.size() && !failure; ++i) {
            table[i].handle = quintptr(101 + i);
            std::memcpy(table[i].entryName, names[i].constData(), size_t(names[i].size()));
        }
        *count = failure ? 0 : 2;
        return failure;
    };
    service.hangUp = [&](quintptr handle) { return handles.append(handle), 668u; };
    platform::RasDialUp dialUp(present ? service : platform::RasApi());
    platform::install(&dialUp);
    HangUpRas();
    platform::install(static_cast<platform::DialUp *>(nullptr));
    QCOMPARE(sizes, offered);
    QCOMPARE(handles, hungUp);
    QCOMPARE(startup().LastRasResult, lastResult);
    QVERIFY(seams.boxes.shown().isEmpty());
}

TOLMARA_REGISTER_TEST(DialUpTest)
#include "tst_dialup.moc"
