// Configuration of the simulated writer: its medium, where the medium's contents live and which faults to act out.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace uc::disc {

// Inserted media the simulated writer knows; the values are the DISC_TYPE codes.
enum class Medium {
    None = 14,
    CdRom = 1, CdR = 2, CdRw = 3,
    DvdRom = 4, DvdR = 5, DvdRam = 6, DvdRwRestricted = 7, DvdRwSequential = 8, DvdPlusRw = 9,
    DdCdRom = 10, DdCdR = 11, DdCdRw = 12, DvdPlusR = 13, DvdPlusRDl = 15, DvdRDl = 16,
    BdRom = 17, BdR = 18, BdRe = 19,
};

struct MediumFacts {
    const char* name;          // as written in the configuration ("cd-r", "dvd-rw-ro", ...)
    std::uint32_t capacity;    // logical blocks of a blank medium
    bool writable;
    bool erasable;             // can be blanked
    bool overwritable;         // restricted overwrite / +RW / RAM / BD-RE: grows even after closing
    bool cd;                   // CD family: tracks of at least 300 blocks
    std::uint32_t maxWriteKBps;
};
const MediumFacts& FactsOf(Medium medium);
bool MediumFromName(std::string_view name, Medium& medium);

// The state a medium starts in when its image has no state file beside it yet.
enum class InitialState { Blank, Appendable, Closed };

struct DiscConfig {
    std::string image;               // UTF-8 path of the medium's contents (an ISO image of all sessions)
    Medium medium = Medium::DvdR;
    InitialState state = InitialState::Blank;  // an existing image given as an appendable or closed disc
    std::int64_t capacity = -1;      // blocks; -1: the medium's usual capacity
    bool trackAtOnce = true;
    bool bufferUnderrunProtection = true;
    int devices = 1;
    std::string vendor = "UTILS";
    std::string product = "SIMULATED DVDRW";
    std::string revision = "1.00";
    std::uint32_t cacheBytes = 2u << 20;

    // Faults acted out on demand.
    bool noMedium = false;             // TestUnitReady: medium not present
    int notReady = 0;                  // TestUnitReady answers "becoming ready" this many times first
    std::int64_t writeErrorBlock = -1; // the track write fails at this block of the track
    int writeErrorPercent = -1;        // ... or this far into the track
    bool failClose = false;            // CloseSession fails; the session stays unreadable
    bool failErase = false;
    bool failSpeeds = false;           // SetSpeeds fails (the burner only warns)
    bool failOpc = false;
    bool failEject = false;
    std::int64_t freeBlocks = -1;      // report (and enforce) at most this many free blocks
};

struct ConfigProblem {
    int line = 0;
    std::string text;
};

// Applies "key = value" lines to `config` ('#' starts a comment; ';' also separates settings so a whole
// configuration fits one environment variable). Unknown keys and bad values are reported, not applied.
void ParseDiscConfig(std::string_view text, DiscConfig& config, std::vector<ConfigProblem>& problems);

// The configuration in effect: defaults, then the file named by UC_STARBURN_CONFIG, then the settings in
// UC_STARBURN_SET. Without an image setting the medium lives in "starburn-disc.iso" in the temporary folder.
DiscConfig LoadDiscConfig(std::vector<ConfigProblem>& problems);

}  // namespace uc::disc
