#pragma once
// The main window opened as start-up opens it, with a picture in the
// temporary file as a good reply leaves it, for the display and saving tests.

#include "app/settings.h"
#include "fetch/frmMain.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "view/frmLarge.h"

#include <QCheckBox>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace viewtest {

// Owns the window (and the projector, when one was opened) for one test;
// calls are made by hand.
struct OpenWindow {
    explicit OpenWindow(fakes::TestSeams &seams);
    ~OpenWindow() { delete projector(); delete w; }
    frmMain *operator->() const { return w; }
    QPointer<frmMain> w;
};

// Writes bytes to the run's temporary file as the reply handler does, as
// pic007.jpg, marks it available for saving and, when show, shows it.
void putPicture(const QByteArray &bytes, bool show = true);
// Sends a mouse event straight to a widget, at pos in its own coordinates.
void sendMouse(QWidget *widget, QEvent::Type type, Qt::MouseButton button, QPoint pos = QPoint(5, 5));
void openProjector(frmMain *w);
QStringList filesIn(const QString &dir);
QByteArray contents(const QString &path);

} // namespace viewtest
