// The platform part of ChildProcess: spawning with redirected pipes, raw reads and writes, killing, waiting.
#pragma once

#include <string>
#include <vector>

#include "child_process.h"

namespace uc::test {

ChildProcess::Pipes* NewPipes();
bool SpawnChild(ChildProcess::Pipes& pipes, const std::wstring& program, const std::vector<std::wstring>& args);
// Bytes read from the child's output; 0 at its end, negative on error.
long ReadChild(ChildProcess::Pipes& pipes, char* buffer, std::size_t size);
bool WriteChild(ChildProcess::Pipes& pipes, const std::string& bytes);
void CloseChildInput(ChildProcess::Pipes& pipes);
void KillChild(ChildProcess::Pipes& pipes);
int WaitChild(ChildProcess::Pipes& pipes);

}  // namespace uc::test
