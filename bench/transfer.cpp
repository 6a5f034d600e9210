// Mines 50 pictures of 500 KB and one of 16 MB from a local server with the
// real main window (offscreen), at chunk sizes 256 and 8192, and prints per
// call the time from the request to the picture kept in the temporary file,
// beside curl fetching the same 50 files in one process; the longest gap
// between ticks of a 10 ms timer during the 16 MB reply; peak memory.

#include "app/settings.h"
#include "fetch/frmMain.h"
#include "fetch/run_state.h"
#include "platform/Inet1.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/window_fixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <sys/resource.h>
#include <cstdio>

namespace {

constexpr int SeriesLength = 50;
constexpr qsizetype PictureSize = 500 * 1024;
constexpr qsizetype BigSize = 16 * 1024 * 1024;

QByteArray paddedPicture(qsizetype totalSize)
{
    const QByteArray base = makeJpeg(QSize(64, 48), true);
    QByteArray padded = base.left(2);
    const QByteArray filler(65533, 'x');
    while (padded.size() + base.size() + 65537 < totalSize) {
        padded += QByteArray("\xFF\xEF\xFF\xFF", 4);
        padded += filler;
    }
    const qsizetype rest = totalSize - padded.size() - base.size() - 4;
    if (rest > 0) {
        padded += QByteArray("\xFF\xEF", 2);
        padded += char((rest + 2) >> 8);
        padded += char((rest + 2) & 0xFF);
        padded += QByteArray(rest, 'y');
    }
    return padded + base.mid(2);
}

long peakResidentKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

struct RunFigures {
    double msPerCall = 0;
    double msInTransfer = 0; // of which: from the request to the transfer control's last report
    double bigCallMs = 0;
    qint64 longestGapMs = 0;
};

// Mines /s/p01.jpg .. /s/p50.jpg then /s/big.jpg; the run ends at the first gap.
RunFigures mine(fakes::TestSeams &seams, const QString &server, int biteSize)
{
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    w->timCallGetNext->setInterval(0);
    settings().BiteSize.IntLet(qint16(biteSize));
    settings().IncLimit.LongLet(1);
    settings().SaveFullAuto.boolLet(true);
    settings().SaveDir.VarLet(QString()); // nothing to save into: only the transfer counts

    QElapsedTimer clock;
    QList<qint64> calls;
    qint64 requested = 0;
    QObject::connect(w->txtStatus, &QLineEdit::textChanged, w, [&](const QString &text) {
        if (text.startsWith(QLatin1String("Requesting ")))
            requested = clock.nsecsElapsed();
    });
    qint64 lastReport = 0;
    QList<qint64> transfers;
    QObject::connect(w->Inet1, &Inet::StateChanged, w, [&](int state) {
        if (state <= Inet::icDisconnected)
            lastReport = clock.nsecsElapsed();
    });
    QObject::connect(w, &frmMain::pictureStored, w, [&] {
        calls.append(clock.nsecsElapsed() - requested);
        transfers.append(lastReport - requested);
    });

    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(10);
    qint64 lastTick = 0;
    qint64 longest = 0;
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.elapsed();
        if (calls.size() == SeriesLength)
            longest = qMax(longest, now - lastTick);
        lastTick = now;
    });

    w->txtAddress->setText(server + QStringLiteral("/s/p01.jpg"));
    w->txtMask->clear(); // derived at START: the last two digits count
    clock.start();
    ticker.start();
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    while (runState().RunActive)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    ticker.stop();
    w->Unload();
    QCoreApplication::processEvents();

    RunFigures figures;
    if (calls.size() < SeriesLength) {
        std::printf("  only %lld of %d calls stored a picture\n", qlonglong(calls.size()), SeriesLength);
        return figures;
    }
    qint64 sum = 0;
    for (int i = 0; i < SeriesLength; ++i)
        sum += calls.at(i);
    figures.msPerCall = sum / 1e6 / SeriesLength;
    qint64 transferSum = 0;
    for (int i = 0; i < SeriesLength; ++i)
        transferSum += transfers.at(i);
    figures.msInTransfer = transferSum / 1e6 / SeriesLength;
    figures.bigCallMs = calls.size() > SeriesLength ? calls.at(SeriesLength) / 1e6 : 0;
    figures.longestGapMs = longest;
    return figures;
}

double curlPerFile(const QString &server)
{
    QProcess curl;
    QElapsedTimer clock;
    clock.start();
    curl.start(QStringLiteral("curl"), {QStringLiteral("-s"), QStringLiteral("-o"), QStringLiteral("/dev/null"),
                                        server + QStringLiteral("/s/p[01-50].jpg")});
    if (!curl.waitForStarted(5000))
        return -1;
    while (curl.state() != QProcess::NotRunning)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return clock.nsecsElapsed() / 1e6 / SeriesLength;
}

} // namespace

// The server runs in a process of its own, so that neither Tolmara nor curl
// shares its thread or its memory with it.
int serve()
{
    const QByteArray picture = paddedPicture(PictureSize);
    const QByteArray big = paddedPicture(BigSize);
    ScriptedHttpServer server;
    for (int n = 1; n <= SeriesLength; ++n)
        server.setScript(QStringLiteral("/s/p%1.jpg").arg(n, 2, 10, QLatin1Char('0')),
                         HttpScript::reply("image/jpeg", picture));
    server.setScript(QStringLiteral("/s/p51.jpg"), HttpScript::reply("image/jpeg", big));
    std::printf("%s\n", qPrintable(server.url(QString())));
    std::fflush(stdout);
    return QCoreApplication::exec();
}

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc > 1 && qstrcmp(argv[1], "--serve") == 0)
        return serve();

    QProcess serverProcess;
    serverProcess.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--serve")});
    if (!serverProcess.waitForReadyRead(10000)) {
        std::printf("the server did not start\n");
        return 1;
    }
    const QString server = QString::fromLatin1(serverProcess.readLine()).trimmed();
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    const long baselineKb = peakResidentKb();

    std::printf("Tolmara transfer bench: %d pictures of %lld bytes, then one of %lld bytes, from a local server process\n",
                SeriesLength, qlonglong(PictureSize), qlonglong(BigSize));
    const double curlMs = curlPerFile(server);
    std::printf("curl, one process, URL globbing:   %8.2f ms per file\n", curlMs);
    for (int bite : {8192, 256}) {
        const RunFigures f = mine(seams, server, bite);
        std::printf("Tolmara, BiteSize %4d:            %8.2f ms per call (%.2fx curl; %.2f ms of it in the transfer "
                    "control); 16 MB call %.0f ms; longest 10 ms-timer gap during it %lld ms\n",
                    bite, f.msPerCall, curlMs > 0 ? f.msPerCall / curlMs : 0.0, f.msInTransfer, f.bigCallMs,
                    qlonglong(f.longestGapMs));
    }
    std::printf("peak resident memory: %ld MB (%ld MB before mining); "
                "target under %lld MB\n",
                peakResidentKb() / 1024, baselineKb / 1024, qlonglong(64 + 3 * BigSize / (1024 * 1024)));
    serverProcess.kill();
    serverProcess.waitForFinished();
    return 0;
}
