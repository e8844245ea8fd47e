// Streams an image through a ring of buffers filled by a worker thread.
#include "export/simulator/image_pump.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace uc::disc {

bool PumpImage(IsoImage& image, std::uint64_t total, std::size_t chunk,
               const std::function<bool(std::uint8_t*, std::size_t)>& sink, StreamError& error) {
    constexpr int kBuffers = 4;
    struct Piece {
        std::vector<std::uint8_t> bytes;
        std::size_t size = 0;
    };
    std::vector<Piece> pieces(kBuffers);
    for (Piece& p : pieces) p.bytes.resize(chunk);
    std::mutex lock;
    std::condition_variable changed;
    std::deque<int> free = {0, 1, 2, 3}, full;
    bool stop = false, finished = false, failed = false;

    image.Rewind();
    std::thread reader([&] {
        std::uint64_t done = 0;
        while (done < total) {
            int slot;
            {
                std::unique_lock<std::mutex> hold(lock);
                changed.wait(hold, [&] { return stop || !free.empty(); });
                if (stop) return;
                slot = free.front();
                free.pop_front();
            }
            Piece& p = pieces[slot];
            const std::size_t want = static_cast<std::size_t>(std::min<std::uint64_t>(chunk, total - done));
            std::size_t produced = 0;
            StreamError why;
            const bool ok = image.Read(p.bytes.data(), want, produced, why);
            std::memset(p.bytes.data() + produced, 0, want - produced);
            p.size = want;
            std::lock_guard<std::mutex> hold(lock);
            if (!ok) {
                error = why;
                failed = true;
                break;
            }
            full.push_back(slot);
            done += want;
            changed.notify_all();
        }
        std::lock_guard<std::mutex> hold(lock);
        finished = true;
        changed.notify_all();
    });

    bool ok = true;
    for (;;) {
        int slot;
        {
            std::unique_lock<std::mutex> hold(lock);
            changed.wait(hold, [&] { return !full.empty() || finished; });
            if (full.empty()) {
                ok = !failed;
                break;
            }
            slot = full.front();
            full.pop_front();
        }
        const bool more = sink(pieces[slot].bytes.data(), pieces[slot].size);
        std::lock_guard<std::mutex> hold(lock);
        free.push_back(slot);
        changed.notify_all();
        if (!more) {
            stop = true;
            break;
        }
    }
    reader.join();
    return ok;
}

}  // namespace uc::disc
