// Helper process of the lock tests: takes and releases named mutexes on commands read line by line from stdin.
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "platform/text.h"
#include "system/custom_mutex.h"
#include "system/mutex_backend.h"

// Commands (one reply line each):
//   lock NAME          take and keep a guard                                   -> "locked valid=0|1"
//   unlock             end the newest guard                                    -> "unlocked"
//   try NAME           probe without waiting -> "try acquired|abandoned|timeout|failed"
//   work NAME FILE N   N x (lock, add 1 to the number in FILE, unlock)         -> "worked valid=K"
//   die                end at once, releasing nothing
// The end of the input releases everything and ends the process.
int main() {
    std::map<std::string, std::unique_ptr<CCustomMutex>> mutexes;
    auto mutex = [&](const std::string& name) -> CCustomMutex& {
        auto& m = mutexes[name];
        if (!m) {
            m = std::make_unique<CCustomMutex>();
            if (!m->Create(nullptr, 0, uc::FromUtf8(name).c_str())) std::cerr << "lock_child: cannot create " << name << "\n";
        }
        return *m;
    };
    std::vector<std::unique_ptr<CMutexLock>> guards;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream in(line);
        std::string command, name, file;
        in >> command >> name;
        if (command == "lock") {
            guards.push_back(std::make_unique<CMutexLock>(mutex(name)));
            std::cout << "locked valid=" << guards.back()->IsValid() << std::endl;
        } else if (command == "unlock" && !guards.empty()) {
            guards.pop_back();
            std::cout << "unlocked" << std::endl;
        } else if (command == "try") {
            void* h = mutex(name).GetHandle();
            const auto r = uc::sync::WaitMutex(h, 0);
            const bool got = r == uc::sync::WaitResult::Acquired || r == uc::sync::WaitResult::Abandoned;
            if (got) uc::sync::ReleaseMutexObject(h);
            std::cout << "try " << (r == uc::sync::WaitResult::Acquired ? "acquired" : got ? "abandoned"
                                    : r == uc::sync::WaitResult::Timeout ? "timeout" : "failed") << std::endl;
        } else if (command == "work") {
            int rounds = 0, valid = 0;
            in >> file >> rounds;
            for (int i = 0; i < rounds; ++i) {
                CMutexLock lock(mutex(name));
                valid += lock.IsValid();
                long value = 0;
                std::ifstream(file) >> value;
                std::ofstream(file, std::ios::trunc) << value + 1;
            }
            std::cout << "worked valid=" << valid << std::endl;
        } else if (command == "die") {
            std::_Exit(3);
        } else {
            std::cout << "unknown " << line << std::endl;
        }
    }
    while (!guards.empty()) guards.pop_back();  // newest first, before their mutexes close
    return 0;
}
