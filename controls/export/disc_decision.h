// How the burn uses the medium it found: write, erase first, append, abandon, or refuse a read-only disc.
#pragma once

#include <functional>

#include "export/burn_presenter.h"
#include "platform/export.h"

namespace uc::exporting {

enum class DiscUse { Write, EraseThenWrite, Append, Abandon, ReadOnly };

// The question the burn asks: `notEmpty` true for the not-empty question (Yes/No/Cancel), false for the
// closed-disc question (Yes/No).
using AskAboutDisc = std::function<Answer(bool notEmpty)>;

// Disc status 0 empty, 1 appendable, 2 closed; `discType` 7 is DVD-RW restricted overwrite, which stays
// appendable when closed.
UC_API DiscUse DecideDiscUse(bool erasable, int discStatus, int discType, const AskAboutDisc& ask);

}  // namespace uc::exporting
