// What a user waits for in one call, request to saved file, with the real main
// window (offscreen) in a Full Auto run, beside the same files fetched and
// written by curl (one process, URL globbing) and by a minimal client (one
// socket, one read loop, one write: the floor). Pictures of 50 KB, 500 KB,
// 5 MB and 30 MB, at BiteSize 512 and 8192. Then the pace of a Full Auto run
// of 40 camera photos (1280x960, about 0.5 MB) at the program's own 300 ms.
//
//   bench_transfer [rounds]     the figures above, medians over the rounds
//   bench_transfer pace         the pace of the 40-photo run alone
//   bench_transfer memory       peak memory for one 30 MB picture, and the
//                               memory kept after ten replies cut off at the
//                               body cap
//
// The server is a small blocking socket server in a process of its own, on
// 127.0.0.1 only. Temporary and saved files go to a folder under the system's
// temporary folder, so that writing and syncing them costs what it costs on
// that disk; curl and the minimal client write their files there too, without
// a sync.

#include "photo.h"

#include "app/settings.h"
#include "fetch/frmMain.h"
#include "app/run_state.h"
#include "platform/Inet1.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/window_fixture.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <thread>

namespace {

constexpr qsizetype KB = 1024;
constexpr qsizetype MB = 1024 * 1024;
const QList<qsizetype> Sizes{50 * KB, 500 * KB, 5 * MB, 30 * MB};
constexpr int PaceCalls = 40;
constexpr int PaceMs = 300;

int callsFor(qsizetype size) { return size <= 500 * KB ? 30 : size <= 5 * MB ? 10 : 5; }

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

double median(QList<double> values)
{
    if (values.isEmpty())
        return -1;
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

// ---- the server ------------------------------------------------------------

struct Content {
    std::map<qsizetype, QByteArray> padded;
    QByteArray camera;
};

bool sendAll(int socket, const char *data, qsizetype size)
{
    while (size > 0) {
        const ssize_t sent = ::send(socket, data, size_t(size), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        data += sent;
        size -= sent;
    }
    return true;
}

bool sendReply(int socket, const QByteArray &body)
{
    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Type: image/jpeg\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n\r\n";
    return sendAll(socket, head.constData(), head.size()) && sendAll(socket, body.constData(), body.size());
}

// An endless body, without a length, until the client gives up.
void sendEndless(int socket)
{
    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Type: image/jpeg\r\nConnection: close\r\n\r\n";
    const QByteArray block(MB, 'e');
    if (!sendAll(socket, head.constData(), head.size()))
        return;
    for (int i = 0; i < 4096 && sendAll(socket, block.constData(), block.size()); ++i) {
    }
}

// /b/<size>/<count>/pNN.jpg and /photo/<count>/pNN.jpg: a picture while NN is
// at most count, then not found; /endless: a body without end.
bool answer(int socket, const Content &content, const QByteArray &path)
{
    if (path == "/endless") {
        sendEndless(socket);
        return false;
    }
    const QList<QByteArray> parts = path.split('/');
    const int number = parts.last().mid(1, 2).toInt();
    const QByteArray *body = nullptr;
    if (parts.size() == 5 && parts.at(1) == "b" && number <= parts.at(3).toInt()) {
        const auto found = content.padded.find(parts.at(2).toLongLong());
        body = found == content.padded.end() ? nullptr : &found->second;
    } else if (parts.size() == 4 && parts.at(1) == "photo" && number <= parts.at(2).toInt()) {
        body = &content.camera;
    }
    if (body)
        return sendReply(socket, *body);
    const QByteArray missing = "HTTP/1.1 404 Not Found\r\nContent-Type: text/html\r\nContent-Length: 9\r\n\r\nnot found";
    return sendAll(socket, missing.constData(), missing.size());
}

void serveConnection(int socket, const Content *content)
{
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    QByteArray pending;
    char block[4096];
    for (;;) {
        qsizetype end = pending.indexOf("\r\n\r\n");
        while (end < 0) {
            const ssize_t got = ::recv(socket, block, sizeof block, 0);
            if (got <= 0) {
                ::close(socket);
                return;
            }
            pending.append(block, got);
            end = pending.indexOf("\r\n\r\n");
        }
        const QByteArray line = pending.left(pending.indexOf("\r\n"));
        pending.remove(0, end + 4);
        const QList<QByteArray> words = line.split(' ');
        if (words.size() < 2 || !answer(socket, *content, words.at(1)))
            break;
    }
    ::close(socket);
}

int serve()
{
    static Content content;
    for (qsizetype size : Sizes)
        content.padded[size] = paddedPicture(size);
    content.camera = photo(QSize(1280, 960), 92);
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(listener, reinterpret_cast<sockaddr *>(&address), length) != 0 || ::listen(listener, 64) != 0
        || getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length) != 0)
        return 1;
    std::printf("%d %lld\n", ntohs(address.sin_port), qlonglong(content.camera.size()));
    std::fflush(stdout);
    for (;;) {
        const int socket = ::accept(listener, nullptr, nullptr);
        if (socket >= 0)
            std::thread(serveConnection, socket, &content).detach();
    }
}

// ---- the minimal client: the floor ------------------------------------------

// One GET on a fresh connection, the body read whole, written to file. False on any fault.
bool fetchToFile(int port, const QByteArray &path, const QString &file)
{
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const QByteArray request = "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";
    if (::connect(socket, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0
        || !sendAll(socket, request.constData(), request.size())) {
        ::close(socket);
        return false;
    }
    QByteArray reply;
    qsizetype bodyStart = -1, total = -1;
    char block[65536];
    for (;;) {
        const ssize_t got = ::recv(socket, block, sizeof block, 0);
        if (got <= 0)
            break;
        reply.append(block, got);
        if (bodyStart < 0 && (bodyStart = reply.indexOf("\r\n\r\n")) >= 0) {
            bodyStart += 4;
            const qsizetype at = reply.indexOf("Content-Length: ") + 16;
            total = bodyStart + reply.mid(at, reply.indexOf("\r\n", at) - at).toLongLong();
            reply.reserve(total);
        }
        if (total >= 0 && reply.size() >= total)
            break;
    }
    ::close(socket);
    const int out = ::open(QFile::encodeName(file).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const bool written = out >= 0 && bodyStart > 0
        && ::write(out, reply.constData() + bodyStart, size_t(reply.size() - bodyStart)) == reply.size() - bodyStart;
    if (out >= 0)
        ::close(out);
    return written;
}

QByteArray seriesPath(qsizetype size, int count, int number)
{
    return "/b/" + QByteArray::number(size) + '/' + QByteArray::number(count) + "/p"
        + QByteArray::number(number).rightJustified(2, '0') + ".jpg";
}

double floorMs(int port, qsizetype size, const QString &folder)
{
    QList<double> times;
    for (int n = 1; n <= callsFor(size); ++n) {
        QElapsedTimer clock;
        clock.start();
        if (!fetchToFile(port, seriesPath(size, callsFor(size), n), folder + QStringLiteral("/floor.jpg")))
            return -1;
        times.append(clock.nsecsElapsed() / 1e6);
    }
    return median(times);
}

// curl fetching the series in one process, each file written: the whole run per file.
double curlMs(const QString &server, qsizetype size, const QString &folder)
{
    const int count = callsFor(size);
    const QString glob = QString::fromLatin1(seriesPath(size, count, 1)).replace(
        QStringLiteral("p01.jpg"), QStringLiteral("p[01-%1].jpg").arg(count, 2, 10, QLatin1Char('0')));
    QProcess curl;
    QElapsedTimer clock;
    clock.start();
    curl.start(QStringLiteral("curl"),
               {QStringLiteral("-s"), QStringLiteral("-o"), folder + QStringLiteral("/curl#1.jpg"), server + glob});
    if (!curl.waitForFinished(60000) || curl.exitCode() != 0)
        return -1;
    return clock.nsecsElapsed() / 1e6 / count;
}

// ---- Tolmara ----------------------------------------------------------------

struct Run {
    QList<qint64> requests; // ns since the start, at "Requesting ..."
    QList<qint64> saves;    // ns since the start, when the saved count went up
};

// A Full Auto run from the first address until the server says not found.
Run mine(fakes::TestSeams &seams, const QString &first, int biteSize, int intervalMs, const QString &folder)
{
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    w->timCallGetNext->setInterval(intervalMs);
    Settings &s = settings();
    s.BiteSize.IntLet(qint16(biteSize));
    s.IncLimit.LongLet(1);
    s.SaveFullAuto.boolLet(true);
    s.TempDir.VarLet(folder);
    s.SaveDir.VarLet(folder);

    Run run;
    QElapsedTimer clock;
    QObject::connect(w->txtStatus, &QLineEdit::textChanged, w, [&](const QString &text) {
        if (text.startsWith(QLatin1String("Requesting ")))
            run.requests.append(clock.nsecsElapsed());
    });
    QObject::connect(w->txtTotal, &QLineEdit::textChanged, w, [&] { run.saves.append(clock.nsecsElapsed()); });
    w->txtAddress->setText(first);
    w->txtMask->clear(); // derived at START: the last two digits count
    clock.start();
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    while (runState().RunActive)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    w->closeFromProgram();
    QCoreApplication::processEvents();
    return run;
}

// The median of request-to-saved-file over the run's calls; -1 when a call saved nothing.
double perCallMs(const Run &run, int expected)
{
    if (run.saves.size() != expected || run.requests.size() < expected) {
        std::printf("  only %lld of %d calls saved a picture\n", qlonglong(run.saves.size()), expected);
        return -1;
    }
    QList<double> calls;
    for (int i = 0; i < expected; ++i)
        calls.append((run.saves.at(i) - run.requests.at(i)) / 1e6);
    return median(calls);
}

struct Server {
    QProcess process;
    int port = 0;
    qsizetype photoBytes = 0;
    QString url() const { return QStringLiteral("http://127.0.0.1:%1").arg(port); }

    bool start()
    {
        process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--serve")});
        if (!process.waitForReadyRead(30000))
            return false;
        const QList<QByteArray> words = process.readLine().trimmed().split(' ');
        port = words.value(0).toInt();
        photoBytes = words.value(1).toLongLong();
        return port > 0;
    }
    ~Server()
    {
        process.kill();
        process.waitForFinished();
    }
};

QString figure(double ms, double floor, double curl)
{
    if (ms < 0)
        return QStringLiteral("failed");
    return QStringLiteral("%1 ms (+%2 floor, %3x curl)")
        .arg(ms, 7, 'f', 2)
        .arg(ms - floor, 6, 'f', 2)
        .arg(curl > 0 ? ms / curl : 0.0, 4, 'f', 2);
}

void transferFigures(fakes::TestSeams &seams, const Server &server, int rounds, const QString &folder)
{
    std::printf("per call, request to saved file, median of %d rounds (each round's median call):\n", rounds);
    std::printf("%8s %9s %9s  %-38s %-38s\n", "size", "floor", "curl", "Tolmara BiteSize 512", "Tolmara BiteSize 8192");
    for (qsizetype size : Sizes) {
        QList<double> floor, curl, bite512, bite8192;
        const int count = callsFor(size);
        const QString first = server.url() + QString::fromLatin1(seriesPath(size, count, 1));
        for (int round = 0; round < rounds; ++round) {
            floor.append(floorMs(server.port, size, folder));
            curl.append(curlMs(server.url(), size, folder));
            bite512.append(perCallMs(mine(seams, first, 512, 0, folder), count));
            bite8192.append(perCallMs(mine(seams, first, 8192, 0, folder), count));
        }
        const double f = median(floor), c = median(curl);
        std::printf("%5lld KB %6.2f ms %6.2f ms  %-38s %-38s\n", qlonglong(size / KB), f, c,
                    qPrintable(figure(median(bite512), f, c)), qPrintable(figure(median(bite8192), f, c)));
        std::fflush(stdout);
    }
}

void paceFigures(fakes::TestSeams &seams, const Server &server, const QString &folder)
{
    const QString first = server.url() + QStringLiteral("/photo/%1/p01.jpg").arg(PaceCalls);
    const Run run = mine(seams, first, 512, PaceMs, folder);
    if (run.saves.size() != PaceCalls || run.requests.size() < PaceCalls) {
        std::printf("pace: only %lld of %d photos saved\n", qlonglong(run.saves.size()), PaceCalls);
        return;
    }
    double gapSum = 0, gapWorst = 0, waitSum = 0, waitWorst = 0;
    for (int i = 1; i < PaceCalls; ++i) {
        const double gap = (run.requests.at(i) - run.requests.at(i - 1)) / 1e6;
        const double wait = (run.requests.at(i) - run.saves.at(i - 1)) / 1e6;
        gapSum += gap;
        gapWorst = qMax(gapWorst, gap);
        waitSum += wait;
        waitWorst = qMax(waitWorst, wait);
    }
    std::printf("Full Auto, %d photos 1280x960 of %lld bytes, BiteSize 512, pace %d ms:\n"
                "  gap between requests:          mean %6.1f ms, worst %6.1f ms\n"
                "  from a save to the next request: mean %6.1f ms, worst %6.1f ms\n",
                PaceCalls, qlonglong(server.photoBytes), PaceMs, gapSum / (PaceCalls - 1), gapWorst,
                waitSum / (PaceCalls - 1), waitWorst);
}

// ---- memory ------------------------------------------------------------------

qint64 statusKb(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').value(0).toLongLong();
    return -1;
}

void settle()
{
    for (int i = 0; i < 20; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QThread::msleep(10);
    }
}

void memoryFigures(fakes::TestSeams &seams, const Server &server, const QString &folder)
{
    const qsizetype size = 30 * MB;
    const QString first = server.url() + QString::fromLatin1(seriesPath(size, 1, 1));
    QPointer<frmMain> empty = fixture::openMainWindow(seams);
    settle();
    const qint64 idleKb = statusKb("VmRSS:");
    empty->closeFromProgram();
    settle();
    QFile reset(QStringLiteral("/proc/self/clear_refs"));
    if (!reset.open(QIODevice::WriteOnly) || reset.write("5") != 1)
        std::printf("(the peak could not be reset: it counts from the start of the process)\n");
    reset.close();
    mine(seams, first, 8192, 0, folder);
    const qint64 peakKb = statusKb("VmHWM:");
    std::printf("one 30 MB picture, BiteSize 8192: peak %lld MiB beyond the window's %lld MiB (%.2fx the picture)\n",
                qlonglong((peakKb - idleKb) / 1024), qlonglong(idleKb / 1024),
                double(peakKb - idleKb) * 1024 / double(size));

    settle();
    const qint64 beforeKb = statusKb("VmRSS:");
    Inet inet;
    int cutOff = 0;
    for (int i = 0; i < 10; ++i) {
        bool ended = false;
        QMetaObject::Connection c = QObject::connect(&inet, &Inet::StateChanged, [&](int state) {
            if (state == Inet::icError || state == Inet::icResponseCompleted) {
                ended = true;
                cutOff += state == Inet::icError && inet.ResponseInfo().startsWith(QLatin1String("Reply too large"));
            }
        });
        inet.Execute(server.url() + QStringLiteral("/endless"), QStringLiteral("GET"));
        while (!ended)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QObject::disconnect(c);
    }
    settle();
    const qint64 afterKb = statusKb("VmRSS:");
    std::printf("%d of 10 replies cut off at the %lld MiB body cap: %lld MiB held after them "
                "(idle %lld MiB before, %lld MiB after)\n",
                cutOff, qlonglong(platform::MaxBodyBytes / MB), qlonglong((afterKb - beforeKb) / 1024),
                qlonglong(beforeKb / 1024), qlonglong(afterKb / 1024));
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc > 1 && qstrcmp(argv[1], "--serve") == 0)
        return serve();
    Server server;
    if (!server.start()) {
        std::printf("the server did not start\n");
        return 1;
    }
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/tolmara-bench-XXXXXX"));
    if (argc > 1 && qstrcmp(argv[1], "memory") == 0) {
        memoryFigures(seams, server, folder.path());
        return 0;
    }
    if (argc > 1 && qstrcmp(argv[1], "pace") == 0) {
        paceFigures(seams, server, folder.path());
        return 0;
    }
    const int rounds = argc > 1 ? qMax(1, atoi(argv[1])) : 3;
    transferFigures(seams, server, rounds, folder.path());
    paceFigures(seams, server, folder.path());
    return 0;
}
