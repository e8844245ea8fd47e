// Helper process of the lock tests: takes and releases named mutexes on commands read line by line from stdin.
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "platform/text.h"
#include "system/custom_mutex.h"
#include "system/mutex_backend.h"

// Commands (one reply line each):
//   lock NAME | priority NAME | multi NAME...   take and keep a guard      -> "locked valid=0|1"
//   unlock                                       end the newest guard       -> "unlocked"
//   try NAME                                     probe without waiting      -> "try acquired|abandoned|timeout|failed"
//   work NAME FILE N                             N x (lock, add 1 to the number in FILE, unlock) -> "worked valid=K"
//   die                                          end at once, releasing nothing
//   exit                                         release everything and end
namespace {

std::map<std::string, std::unique_ptr<CCustomMutex>> g_mutexes;

CCustomMutex& Mutex(const std::string& name) {
    auto& m = g_mutexes[name];
    if (!m) {
        m = std::make_unique<CCustomMutex>();
        if (!m->Create(nullptr, 0, uc::FromUtf8(name).c_str())) std::cerr << "lock_child: cannot create " << name << "\n";
    }
    return *m;
}

const char* Name(uc::sync::WaitResult r) {
    switch (r) {
    case uc::sync::WaitResult::Acquired: return "acquired";
    case uc::sync::WaitResult::Abandoned: return "abandoned";
    case uc::sync::WaitResult::Timeout: return "timeout";
    default: return "failed";
    }
}

}  // namespace

int main() {
    using Guard = std::variant<std::unique_ptr<CMutexLock>, std::unique_ptr<CPriorityLock>, std::unique_ptr<CMutexLockMultiple>>;
    std::vector<Guard> guards;
    std::string line;
    while (std::getline(std::cin, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::istringstream in(line);
        std::string command, name;
        in >> command;
        if (command == "lock" && in >> name) {
            auto g = std::make_unique<CMutexLock>(Mutex(name));
            std::cout << "locked valid=" << g->IsValid() << std::endl;
            guards.emplace_back(std::move(g));
        } else if (command == "priority" && in >> name) {
            auto g = std::make_unique<CPriorityLock>(Mutex(name));
            std::cout << "locked valid=" << g->IsValid() << std::endl;
            guards.emplace_back(std::move(g));
        } else if (command == "multi") {
            std::vector<CCustomMutex*> list;
            while (in >> name) list.push_back(&Mutex(name));
            auto g = std::make_unique<CMutexLockMultiple>(static_cast<unsigned long>(list.size()), list.data());
            std::cout << "locked valid=" << g->IsValid() << std::endl;
            guards.emplace_back(std::move(g));
        } else if (command == "unlock" && !guards.empty()) {
            guards.pop_back();
            std::cout << "unlocked" << std::endl;
        } else if (command == "try" && in >> name) {
            void* h = Mutex(name).GetHandle();
            const auto r = uc::sync::WaitMutex(h, 0);
            if (r == uc::sync::WaitResult::Acquired || r == uc::sync::WaitResult::Abandoned) uc::sync::ReleaseMutexObject(h);
            std::cout << "try " << Name(r) << std::endl;
        } else if (command == "work" && in >> name) {
            std::string file;
            int rounds = 0, valid = 0;
            in >> file >> rounds;
            CCustomMutex& m = Mutex(name);
            for (int i = 0; i < rounds; ++i) {
                CMutexLock lock(m);
                valid += lock.IsValid();
                long value = 0;
                std::ifstream(file) >> value;
                std::ofstream(file, std::ios::trunc) << value + 1;
            }
            std::cout << "worked valid=" << valid << std::endl;
        } else if (command == "die") {
            std::_Exit(3);
        } else if (command == "exit") {
            break;
        } else {
            std::cout << "unknown " << line << std::endl;
        }
    }
    while (!guards.empty()) guards.pop_back();
    return 0;
}
