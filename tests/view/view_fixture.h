#pragma once
// The main window opened as start-up opens it, with a picture in the
// temporary file as a good reply leaves it, for the display and saving tests.

#include "fetch/frmMain.h"
#include "support/fakes.h"

#include <QByteArray>
#include <QEvent>
#include <QPointer>
#include <QString>

namespace viewtest {

// Owns the window (and the projector, when one was opened) for one test.
class OpenWindow {
public:
    explicit OpenWindow(fakes::TestSeams &seams);
    ~OpenWindow();
    OpenWindow(const OpenWindow &) = delete;
    OpenWindow &operator=(const OpenWindow &) = delete;

    frmMain *operator->() const { return m_window; }
    frmMain &operator*() const { return *m_window; }

private:
    QPointer<frmMain> m_window;
};

// Writes bytes to the run's temporary file as the reply handler does, under
// the picture's own name, and marks it available for saving.
void putPicture(const QByteArray &bytes, const QString &fileName = QStringLiteral("pic007.jpg"));
// ShowPic(true) on bytes.
void showPicture(const QByteArray &bytes, const QString &fileName = QStringLiteral("pic007.jpg"));

// Sends a mouse event straight to a widget, at pos in its own coordinates.
void sendMouse(QWidget *widget, QEvent::Type type, Qt::MouseButton button, QPoint pos = QPoint(5, 5));

// A JPEG whose header says it is width x height pixels, without the pixels.
QByteArray jpegClaimingSize(int width, int height);

// The file names in a directory, sorted.
QStringList filesIn(const QString &dir);
QByteArray contents(const QString &path);

} // namespace viewtest
