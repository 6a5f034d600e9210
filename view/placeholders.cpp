// The display, the projector and the saving are not built yet: nothing is
// shown and nothing is saved.

#include "fetch/modfrmMain.h"

void ShowPic(bool) {}
void SaveFile() {}
void setProjectorCaption(const QString &) {}
