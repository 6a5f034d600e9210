// How long a picture takes from the reply handler to the screen, beside what
// decoding the same bytes alone takes.
//
//   QT_QPA_PLATFORM=offscreen bench_display [width height [rounds]]

#include "photo.h"

#include "app/run_state.h"
#include "fetch/frmMain.h"
#include "platform/seams.h"
#include "view/display.h"
#include "view/titled_frame.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

double elapsedMs(const std::function<void()> &work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    return double(clock.nsecsElapsed()) / 1e6;
}

double median(QList<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

class QuietBoxes : public platform::MessageBoxes {
public:
    platform::Answer show(const platform::MessageBoxRequest &request) override
    {
        std::fprintf(stderr, "message box: %s\n", qPrintable(request.text));
        return platform::Answer::Ok;
    }
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    const QSize size(args.size() > 2 ? args[1].toInt() : 4000, args.size() > 2 ? args[2].toInt() : 3000);
    const int rounds = args.size() > 3 ? args[3].toInt() : 15;
    QuietBoxes boxes;
    platform::install(&boxes);

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("TmpBench1.jpg"));
    const QByteArray jpeg = photo(size);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(jpeg) != jpeg.size())
        return 1;
    file.close();

    frmMain window;
    window.show();
    RunState &run = runState();
    run.TempFilePath = path;
    run.TempPicture = jpeg; // as the reply handler leaves it: shown from memory
    run.CurrentFileName = QStringLiteral("bench.jpg");
    ShowPic(true); // warms up the decoder and the window
    QCoreApplication::processEvents();

    // The two alternate, round by round, so that a busy moment of the
    // machine falls on both alike.
    QList<double> decodes, shows;
    for (int i = 0; i < rounds; ++i) {
        decodes.append(elapsedMs([&] { QImage::fromData(jpeg, "JPEG"); }));
        shows.append(elapsedMs([&] {
            ShowPic(true);
            QCoreApplication::processEvents(); // the call's event pass paints what changed
        }));
    }
    const double decode = median(decodes), shown = median(shows);
    std::printf("picture %dx%d, %lld bytes, median of %d rounds\n", size.width(), size.height(),
                static_cast<long long>(jpeg.size()), rounds);
    std::printf("  QImage decoding alone          %8.1f ms\n", decode);
    std::printf("  shown, captions and all        %8.1f ms  (%.2fx)\n", shown, shown / decode);
    std::printf("  picture box shows %dx%d\n", window.pictMain->pixmap().width(), window.pictMain->pixmap().height());
    return 0;
}
