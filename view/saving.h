#pragma once
// Saving the shown picture into the save directory under its own name, a
// time-stamp name or a series name.

#include "app/paths.h"

#include <QString>

// Saves the shown picture when saving is due (Full Auto, or SAVE pressed).
void SaveFile();

// Copies source over destination, whole or not at all: the copy goes to a
// temporary file beside the destination, which is synced to disk and then
// takes the destination's name in one step. The run's temporary picture is
// written from the bytes held in memory instead of being read back. On failure beeps (when so set) and offers Retry and
// Cancel; false once the user cancels.
bool CopyPicture(const QString &source, const QString &destination);

// The name a series picture is saved under: "$eries" + id + "_" + its number,
// at least two digits.
QString seriesFileName(const QString &seriesId, qint32 number);

// directory + file name, with a separator only when the directory does not
// already end in one.
QString savePath(const QString &directory, const QString &fileName);

// Why fileName cannot name a picture in the save directory, or an empty text
// when it can. Every system refuses an empty name, "." and "..", "/" and the
// zero character; Windows' rules (windowsNames) also refuse "\", the
// characters <>:"|?* and control characters, a device name (CON, NUL, COM1,
// ...) with or without an extension, and a name ending in a dot or a blank.
QString fileNameFault(const QString &fileName, bool windowsNames = windowsFileNames());
