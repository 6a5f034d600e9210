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
// Lets a test put the program's directory elsewhere; an empty text restores it.
void overrideProgramDir(const QString &dir);

// The folder that holds the default folders OemSave and OemTemp: the program's
// directory for a portable copy (a build folder, an unpacked archive); the
// user's data folder for an installed copy, whose directory the user cannot write.
QString defaultDirsHome();

// dir + native separator + name.
QString joinPath(const QString &dir, const QString &name);
