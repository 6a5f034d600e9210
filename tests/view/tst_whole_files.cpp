#include "view_fixture.h"

#include "app/settings.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
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

// The disk is full after 64 KiB: the child may write no bigger file, and
// reports through a pipe what the user saw.
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
    int fds[2];
    QVERIFY(pipe(fds) == 0);
    if (fork() == 0) {
        const rlimit limit{64 * 1024, 64 * 1024};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
        SaveFile();
        const QByteArray report = (seams.boxes.texts().join(u'|') + u'|' + QString::number(runState().SavedCount)
                                   + u'|' + w->framLarge->title()).toUtf8();
        (void)!write(fds[1], report.constData(), size_t(report.size()));
        _exit(0);
    }
    close(fds[1]);
    QFile pipeEnd;
    QVERIFY(pipeEnd.open(fds[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle));
    QCOMPARE(QString::fromUtf8(pipeEnd.readAll()), QStringLiteral("File Copy Error: File too large|0|JPEG - pic007.jpg"));
    wait(nullptr);
    QCOMPARE(viewtest::filesIn(fixture::saveDir(seams)), QStringList());
}

void WholeFilesTest::killedMidCopyLeavesTheOldOrTheNewPicture()
{
    fakes::TestSeams seams;
    const QDir dir(seams.folder.path());
    const QString target = dir.filePath(QStringLiteral("save/pic.jpg"));
    QVERIFY(dir.mkpath(QStringLiteral("save")));
    QList<QByteArray> pictures;
    for (const char fill : {'o', 'n'}) {
        pictures.append(makeJpeg(QSize(64, 64)));
        pictures.last().insert(pictures.last().size() - 2, QByteArray(24 * 1024 * 1024, fill));
        QFile file(dir.filePath(QChar::fromLatin1(fill) + QStringLiteral(".jpg")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(pictures.last()) == pictures.last().size());
    }
    QVERIFY(copyWhole(dir.filePath(QStringLiteral("o.jpg")), target).isEmpty());
    // The child marks here whether it was copying when it died.
    void *shared = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    QVERIFY(shared != MAP_FAILED);
    volatile int &copying = *static_cast<int *>(shared);
    int midCopy = 0;
    for (int round = 0; round < 20; ++round) {
        copying = 0;
        const pid_t child = fork();
        if (child == 0) {
            for (;;) {
                for (const char *source : {"n.jpg", "o.jpg"}) {
                    copying = 1;
                    copyWhole(dir.filePath(QLatin1String(source)), target);
                    copying = 0;
                }
            }
        }
        QTest::qSleep(QRandomGenerator::global()->bounded(5, 60));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const QByteArray found = viewtest::contents(target);
        QVERIFY2(found == pictures[0] || found == pictures[1], qPrintable(QString::number(found.size())));
        midCopy += copying;
        // An unfinished copy may stay behind under a name of its own.
        for (const QString &name : viewtest::filesIn(dir.filePath(QStringLiteral("save"))))
            if (name != QLatin1String("pic.jpg"))
                QFile::remove(dir.filePath(QStringLiteral("save/") + name));
    }
    munmap(shared, sizeof(int));
    QVERIFY(midCopy > 0);
}

TOLMARA_REGISTER_TEST(WholeFilesTest)
#include "tst_whole_files.moc"
