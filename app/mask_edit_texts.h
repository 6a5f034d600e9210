#pragma once
// The texts that the advanced mask editor works on: its opener fills them
// before it opens the editor, and the editor writes the accepted mask back.

#include <QString>

struct MaskEditTexts {
    QString sMaskBaseName;   // the file name being masked, without its extension
    QString sMaskDirections; // "0", "+" and "-", one a character of the name
    QString sMaskGroups;     // "*" and "&" runs, one run a group
    bool bMaskEditFromMagazine = false; // the magazine opened the editor, not the main window
};

MaskEditTexts &maskEditTexts();
// Starts the texts afresh, as a new program has them.
void resetMaskEditTexts();
