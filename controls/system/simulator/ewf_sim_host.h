// Where the simulated write filter keeps its state: the file named by UC_EWF_SIM, else "EWFAPI.ini" beside the library.
#pragma once

#include <string>

namespace uc::ewf::sim {

// The value of UC_EWF_SIM in the process environment (empty when unset).
std::wstring StatePathFromEnvironment();
// The folder of the simulated library's own module file.
std::wstring ModuleFolder();

}  // namespace uc::ewf::sim
