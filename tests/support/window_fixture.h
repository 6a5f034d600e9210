#pragma once
// Opens the real main window as start-up does, with its temporary and save
// directories in the test's temporary folder.

#include "fetch/frmMain.h"
#include "support/fakes.h"

#include <QPointer>

namespace fixture {

// TempDir is <folder>/temp and SaveDir <folder>/save (both created); the
// window is shown, deletes itself on close, and calls come 10 ms apart.
QPointer<frmMain> openMainWindow(fakes::TestSeams &seams);
QString saveDir(const fakes::TestSeams &seams);
// The temporary picture file of the run.
QString tempFile();
// A file's bytes; empty when it cannot be read.
QByteArray fileBytes(const QString &path);

} // namespace fixture
