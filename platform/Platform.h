#pragma once
// Which backend the process runs on is the program's choice, never the
// library's: the library's code links against no backend at all. Each final
// target names its default once, before anything uses a port:
//   connectkit.dll       DllMain, on attach: the Windows backend
//   libconnectkit.so     its load-time constructor (sim/LibraryMain.cpp): the simulated PC
//   the test programs    their main: the simulated PC or a configured Windows backend, installed
//   the tool             InstallWorld, before any command runs: a simulated PC with its --world
//   the benchmarks       their main: the simulated PC
// Naming the default only stores a factory; the backend is made on first use,
// so nothing starts when the library is loaded.

#include <memory>

#include "platform/ports/Backend.h"

namespace connectkit::platform {

using BackendFactory = std::shared_ptr<Backend> (*)();

// The backend in use; the first call settles on the default one. A program
// that neither installed a backend nor named a default is built wrongly: the
// call logs that and aborts.
Backend& Current();

// Installs a backend for the whole process. False, with a log line, when a
// backend is already in use or the pointer is null.
bool Install(std::shared_ptr<Backend> backend);

// Names the factory that Current() uses when nothing was installed. Cheap and
// lock-free, so DllMain may call it under the loader lock.
void SetDefaultBackend(BackendFactory factory);

}  // namespace connectkit::platform
