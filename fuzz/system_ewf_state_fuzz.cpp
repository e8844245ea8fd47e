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

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = uc::FromUtf8(std::string(reinterpret_cast<const char*>(data), size));
    sim::WriteFilterSimulator s;
    std::wstring error;
    if (!s.Parse(text, error)) {
        if (error.empty()) std::abort();  // a refusal always says why
        return 0;
    }
    // What was accepted writes back to a file that reads the same.
    const std::wstring saved = s.Serialize();
    sim::WriteFilterSimulator again;
    if (!again.Parse(saved, error) || again.Serialize() != saved) std::abort();

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
