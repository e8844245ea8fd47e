// The erase/append decision table.
#include "export/disc_decision.h"

namespace uc::exporting {

DiscUse DecideDiscUse(bool erasable, int discStatus, int discType, const AskAboutDisc& ask) {
    if (!erasable) {
        if (discStatus == 0) return DiscUse::Write;
        if (discStatus == 1) return DiscUse::Append;
        return DiscUse::ReadOnly;
    }
    if (discStatus == 1 || (discStatus == 2 && discType == 7)) {
        switch (ask(true)) {
        case Answer::Yes: return DiscUse::EraseThenWrite;
        case Answer::No: return DiscUse::Append;
        case Answer::Cancel: return DiscUse::Abandon;
        }
    }
    if (discStatus == 2) return ask(false) == Answer::Yes ? DiscUse::EraseThenWrite : DiscUse::Abandon;
    return DiscUse::Write;
}

}  // namespace uc::exporting
