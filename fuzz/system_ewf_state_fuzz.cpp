// Fuzzes the simulated write filter's state file: parsing, writing back, and every operation on what was read.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/text.h"
#include "system/ewf_api.h"
#include "system/simulator/ewf_simulator.h"

using namespace uc::ewf;

namespace {
bool SameState(const sim::WriteFilterSimulator& a, const sim::WriteFilterSimulator& b) {
    if (a.Volumes().size() != b.Volumes().size() || a.Store().segments != b.Store().segments ||
        a.Store().segmentSize != b.Store().segmentSize || a.Faults().refused != b.Faults().refused ||
        a.Faults().openFailVolume != b.Faults().openFailVolume || a.Faults().listError != b.Faults().listError)
        return false;
    for (std::size_t i = 0; i < a.Volumes().size(); ++i) {
        const sim::SimVolume &x = a.Volumes()[i], &y = b.Volumes()[i];
        if (x.name != y.name || x.device != y.device || x.letter != y.letter || x.type != y.type || x.state != y.state ||
            x.command != y.command || x.used != y.used || x.committed != y.committed || x.level != y.level ||
            x.maxLevels != y.maxLevels || x.commitOnDisable != y.commitOnDisable)
            return false;
    }
    return true;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = uc::FromUtf8(std::string(reinterpret_cast<const char*>(data), size));
    sim::WriteFilterSimulator s;
    std::wstring error;
    if (!s.Parse(text, error)) {
        if (error.empty()) std::abort();  // a refusal always says why
        return 0;
    }
    // What was accepted writes back to a file that reads as the same state.
    sim::WriteFilterSimulator again;
    if (!again.Parse(s.Serialize(), error) || !SameState(s, again)) std::abort();

    ULong e = 0;
    std::vector<std::wstring> names;
    s.ListVolumes(names, e);
    for (std::size_t i = 0; i < s.Volumes().size(); ++i) {
        s.OpenVolume(s.Volumes()[i].name, e);
        s.DriveLetter(s.Volumes()[i].name, e);
        FreeRecord(s.NewVolumeConfig(i, &AllocRecord, e));
        s.Command(i, static_cast<EWF_COMMAND>(i % 5), i % 2 == 0, e);
        s.Write(i, static_cast<std::uint32_t>(i * 7), e);
    }
    FreeRecord(s.NewStoreConfig(&AllocRecord, e));
    if (s.FreeSegments() > s.Store().segments) std::abort();
    s.Restart();
    for (const auto& v : s.Volumes())
        if (v.command != EWF_NO_CMD) std::abort();
    return 0;
}
