// How long the main window takes to appear, beside an empty window of the
// same size. Both are started the same way: as a fresh process of this
// program, timed from the start of the process until its window is first
// painted (the child prints a line then and quits). Rounds alternate between
// the two; the medians are printed.
//
//   bench_startup [rounds [settings-megabytes]]
//
// Run it on a real or virtual display (DISPLAY), or with QT_QPA_PLATFORM=offscreen,
// whose screen is then given a size the program accepts. A child whose first
// window is a message box (the program refused the screen) counts as a failure.
// With settings-megabytes, the settings file gets that much padding of keys
// the program does not know, as a store that has collected years of entries.

#include "fetch/frmMain.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

// Prints "shown" and ends the process when the watched window is first painted.
class FirstPaint : public QObject {
protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && qobject_cast<QMessageBox *>(watched)) {
            std::puts("refused");
            std::fflush(stdout);
            std::_Exit(1);
        }
        if (event->type() == QEvent::Paint && watched->isWidgetType()
            && static_cast<QWidget *>(watched)->isWindow()) {
            std::puts("shown");
            std::fflush(stdout);
            std::_Exit(0); // nothing to tidy: the next round starts afresh

        }
        return false;
    }
};

int child(int argc, char **argv, bool program)
{
    QApplication app(argc, argv);
    FirstPaint painted;
    app.installEventFilter(&painted); // the first window painted, whichever it is
    QWidget empty;
    if (!program) {
        empty.resize(760, 540);
        empty.show();
        return app.exec();
    }
    return runTolmara(); // as main.cpp opens the program
}

void padSettings(const QString &configHome, int megabytes)
{
    if (megabytes <= 0)
        return;
    QFile file(QDir(configHome).filePath(QStringLiteral("Tolmara2.ini")));
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write("[Startup]\nToolTips=TRUE\n[Collected]\n");
    const QByteArray value(90, 'v');
    for (qint64 i = 0; file.size() < qint64(megabytes) << 20; ++i)
        file.write("key" + QByteArray::number(i) + "=" + value + "\n");
}

// Milliseconds from starting the child until it says its window was painted; -1 on failure.
qint64 timeOne(const QString &self, const QString &mode, const QString &home)
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    if (env.value(QStringLiteral("QT_QPA_PLATFORM")) == QLatin1String("offscreen")) {
        QFile screen(home + QStringLiteral("/screen.json"));
        if (screen.open(QIODevice::WriteOnly))
            screen.write(R"({"screens": [{"name": "s", "x": 0, "y": 0, "width": 1024, "height": 768}]})");
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen:configfile=") + screen.fileName());
    }
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QElapsedTimer clock;
    clock.start();
    process.start(self, {mode});
    while (process.waitForReadyRead(20000)) {
        if (process.readAll().contains("shown")) {
            const qint64 ms = clock.elapsed();
            process.waitForFinished(5000);
            return ms;
        }
    }
    process.kill();
    process.waitForFinished();
    return -1;
}

qint64 median(QList<qint64> values)
{
    if (values.isEmpty())
        return -1;
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && (qstrcmp(argv[1], "--empty") == 0 || qstrcmp(argv[1], "--program") == 0))
        return child(argc, argv, qstrcmp(argv[1], "--program") == 0);
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? qMax(1, atoi(argv[1])) : 15;
    const int megabytes = argc > 2 ? atoi(argv[2]) : 0;
    QTemporaryDir home;
    QDir(home.path()).mkpath(QStringLiteral("config"));
    padSettings(home.path() + QStringLiteral("/config"), megabytes);
    const QString self = QCoreApplication::applicationFilePath();
    QList<qint64> empty, program;
    timeOne(self, QStringLiteral("--program"), home.path()); // first start: default folders, caches
    for (int i = 0; i < rounds; ++i) {
        empty << timeOne(self, QStringLiteral("--empty"), home.path());
        program << timeOne(self, QStringLiteral("--program"), home.path());
    }
    const qint64 e = median(empty), p = median(program);
    std::printf("start-up to first paint, median of %d (settings padding %d MB):\n"
                "  empty window %lld ms\n  main window  %lld ms\n  ratio        %.2f\n",
                rounds, megabytes, e, p, e > 0 ? double(p) / double(e) : 0.0);
    return 0;
}
