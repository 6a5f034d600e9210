#include "app/mask_edit_texts.h"

namespace {
MaskEditTexts *texts = new MaskEditTexts;
} // namespace

MaskEditTexts &maskEditTexts() { return *texts; }

void resetMaskEditTexts() { *texts = MaskEditTexts(); }
