#pragma once
// The temporary pictures of running copies of the program. Each copy holds a
// lock file beside every temporary picture it writes ("<picture>.lock"), so
// that a picture nobody holds is known to be left over from a copy that ended
// without a clean quit.

#include <QString>

// Holds picturePath for the rest of this run (again and again is harmless).
void HoldTempPicture(const QString &picturePath);
// Deletes every picture this run holds, with its ".part" file, and lets go of its lock.
void ReleaseTempPictures();
// Deletes from dir the temporary pictures ("Tmp" + five letters or digits +
// ".jpg") and their ".part" files whose lock file is beside them and was left by
// a copy that has ended. Nothing without such a lock is touched.
void RemoveLeftoverTempPictures(const QString &dir);
