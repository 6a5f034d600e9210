#pragma once
// The main window opened as start-up opens it, with a picture in the
// temporary file as a good reply leaves it, for the display and saving tests.

#include "fetch/frmMain.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "view/frmLarge.h"

#include <QEvent>
#include <QPointer>

namespace viewtest {

// Owns the window (and the projector, when one was opened) for one test.
class OpenWindow {
public:
    explicit OpenWindow(fakes::TestSeams &seams);
    ~OpenWindow();
    frmMain *operator->() const { return m_window; }
    frmMain &operator*() const { return *m_window; }

private:
    QPointer<frmMain> m_window;
};

// Writes bytes to the run's temporary file as the reply handler does, under
// the picture's own name, and marks it available for saving; show also shows it.
void putPicture(const QByteArray &bytes, const QString &fileName = QStringLiteral("pic007.jpg"), bool show = false);
inline void showPicture(const QByteArray &bytes) { putPicture(bytes, QStringLiteral("pic007.jpg"), true); }
// Sends a mouse event straight to a widget, at pos in its own coordinates.
void sendMouse(QWidget *widget, QEvent::Type type, Qt::MouseButton button, QPoint pos = QPoint(5, 5));
void openProjector(frmMain &w);
QStringList filesIn(const QString &dir);
QByteArray contents(const QString &path);

} // namespace viewtest
