#include "view_fixture.h"

#include "app/settings.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "view/saving.h"

#include <QDir>
#include <QGroupBox>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QTest>

#include <csignal>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// A saved picture is whole or absent: a full disk and a program killed in
// the middle of a copy leave no part of a picture under its name. Both run
// the copy in a child process.
class WholeFilesTest : public QObject {
    Q_OBJECT
private slots:
    void fullDiskSavesNothing();
    void killedMidCopyLeavesTheOldOrTheNewPicture();
};

namespace {

// Runs work in a child process and returns the text it reports.
QString inChild(const std::function<QString()> &work)
{
    int fds[2];
    if (pipe(fds) != 0)
        return QStringLiteral("no pipe");
    const pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        const QByteArray report = work().toUtf8();
        (void)!write(fds[1], report.constData(), size_t(report.size()));
        _exit(0);
    }
    close(fds[1]);
    QByteArray report;
    char buffer[4096];
    for (ssize_t got; (got = read(fds[0], buffer, sizeof buffer)) > 0;)
        report.append(buffer, got);
    close(fds[0]);
    waitpid(child, nullptr, 0);
    return QString::fromUtf8(report);
}

QByteArray largePicture(char fill)
{
    QByteArray picture = makeJpeg(QSize(64, 64));
    picture.insert(picture.size() - 2, QByteArray(24 * 1024 * 1024, fill));
    return picture;
}

} // namespace

// The disk is full after 64 KiB: the child may write no bigger file.
void WholeFilesTest::fullDiskSavesNothing()
{
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::showPicture(makeJpeg(QSize(800, 600), true));
    // Saved by hand: Full Auto would paint the window first, and the painter's
    // helper threads do not live on in a child process.
    settings().SaveFullAuto.boolLet(false);
    runState().SavePressed = true;
    seams.boxes.expect(platform::Answer::Cancel);
    const QString report = inChild([&] {
        const rlimit limit{64 * 1024, 64 * 1024};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
        SaveFile();
        return seams.boxes.texts().join(QLatin1Char('|')) + QLatin1Char('|') + QString::number(runState().SavedCount)
            + QLatin1Char('|') + w->txtTotal->text() + QLatin1Char('|') + w->framLarge->title();
    });
    QCOMPARE(report, QStringLiteral("File Copy Error: File too large|0|0|JPEG - pic007.jpg"));
    QCOMPARE(viewtest::filesIn(fixture::saveDir(seams)), QStringList());
}

void WholeFilesTest::killedMidCopyLeavesTheOldOrTheNewPicture()
{
    fakes::TestSeams seams;
    const QString dir = seams.folder.path();
    const QString oldPicture = QDir(dir).filePath(QStringLiteral("old.jpg"));
    const QString newPicture = QDir(dir).filePath(QStringLiteral("new.jpg"));
    const QString target = QDir(dir).filePath(QStringLiteral("save/pic.jpg"));
    QDir().mkpath(QDir(dir).filePath(QStringLiteral("save")));
    const QByteArray oldBytes = largePicture('o');
    const QByteArray newBytes = largePicture('n');
    for (const auto &[path, bytes] : {std::pair(oldPicture, oldBytes), std::pair(newPicture, newBytes)}) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QVERIFY(copyWhole(oldPicture, target).isEmpty());
    // The child marks here whether it was copying when it died.
    void *shared = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    QVERIFY(shared != MAP_FAILED);
    volatile int &copying = *static_cast<int *>(shared);
    int midCopy = 0;
    for (int round = 0; round < 25; ++round) {
        copying = 0;
        const pid_t child = fork();
        if (child == 0) {
            for (;;) {
                for (const QString &source : {newPicture, oldPicture}) {
                    copying = 1;
                    copyWhole(source, target);
                    copying = 0;
                }
            }
        }
        QTest::qSleep(QRandomGenerator::global()->bounded(5, 60));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const QByteArray found = viewtest::contents(target);
        QVERIFY2(found == oldBytes || found == newBytes, qPrintable(QStringLiteral("round %1: %2 bytes")
                                                                        .arg(round)
                                                                        .arg(found.size())));
        midCopy += copying;
        // An unfinished copy may stay behind under a name of its own.
        for (const QString &name : viewtest::filesIn(QDir(dir).filePath(QStringLiteral("save"))))
            if (name != QLatin1String("pic.jpg"))
                QFile::remove(QDir(dir).filePath(QStringLiteral("save/") + name));
    }
    munmap(shared, sizeof(int));
    qInfo("%d of 25 kills came in the middle of a copy", midCopy);
    QVERIFY(midCopy > 0);
}

TOLMARA_REGISTER_TEST(WholeFilesTest)
#include "tst_whole_files.moc"
