#pragma once
// Showing each fetched picture: in the main window's picture area, and in the
// projector while it is open.

#include <QString>

class QByteArray;
class QLabel;
class QPixmap;
class MainWindowParts;

// Decodes a JPEG picture at its real size: the bytes held in memory, or the
// file at path when none are held. Null when it is not a JPEG picture, cannot
// be decoded, or would be too large to hold; an empty path with nothing held
// gives a null picture too.
QPixmap loadPicture(const QString &path, const QByteArray &held = QByteArray());

// Puts a picture into a picture box at its real size, at the top left corner
// of its clipping box. A null picture empties the box and leaves it in place.
void placePicture(QLabel *box, const QPixmap &picture);

// Shows the run's picture (held in memory, else in the temporary file) in the
// main window and the projector, and counts it as mined; good: it ended in its
// end marker, else its caption says "...Damaged!" and no picture is shown.
void ShowPic(bool good);

// Gives the main window's picture area its mouse: dragging, SAVE on the right
// button, NEXT on the middle one, and the projector on a double-click.
void attachPictureArea(MainWindowParts &w);
