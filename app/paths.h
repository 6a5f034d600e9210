#pragma once
// Where the program keeps its files: its own directory, the fallback
// directory, and the separator that joins a directory and a file name.

#include <QString>

// "C:\" on Windows; the user's home directory elsewhere.
QString fallbackDir();

// True where file names follow Windows' rules ("\" separates folders, device
// names are kept, and more characters are refused).
bool windowsFileNames();

// The directory of the executable, without a trailing separator.
QString programDir();

// An installed copy: its directory cannot be written, or it lies under /usr
// (where even root must not get folders beside the program).
bool installedCopy();

// The default folder for saved pictures (name "OemSave") or temporary ones
// ("OemTemp"): beside the program for a portable copy (a build folder, an
// unpacked archive); for an installed copy the user's pictures folder with a
// subfolder "Tolmara" and the user's cache folder.
QString defaultDirPath(const QString &name);

// dir + native separator + name.
QString joinPath(const QString &dir, const QString &name);
