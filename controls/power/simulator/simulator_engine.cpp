// Shaping of simulated replies: garbage, split parts and repetition.
#include "power/simulator/simulator_engine.h"

#include <algorithm>

namespace uc::power::sim {

std::vector<Output> Shape(const std::vector<std::uint8_t>& reply, const Faults& faults) {
    std::vector<Output> out;
    if (faults.silent) return out;
    for (int r = 0; r < std::max(1, faults.repeat); ++r) {
        std::vector<std::uint8_t> whole = faults.garbage;
        whole.insert(whole.end(), reply.begin(), reply.end());
        if (faults.splitAt > 0 && faults.splitAt < whole.size()) {
            out.push_back({faults.replyDelay, {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(faults.splitAt)}});
            out.push_back({faults.replyDelay + faults.splitDelay,
                           {whole.begin() + static_cast<std::ptrdiff_t>(faults.splitAt), whole.end()}});
        } else {
            out.push_back({faults.replyDelay, std::move(whole)});
        }
    }
    return out;
}

}  // namespace uc::power::sim
