#pragma once
// The library lives in a host's process, and the host may unload it at any
// moment. Whatever of ours can run after the host's call returned (a thread
// we started, a handler we handed to the platform) would then run code that
// is no longer mapped; and the unload cannot wait for it either, since a
// thread that ends needs the loader lock that FreeLibrary holds.
//
// So the module keeps itself loaded for the rest of the process from the
// moment the first such thing exists: the host's FreeLibrary returns at once
// and our code stays where our threads and handlers expect it. A module that
// never started anything unloads for real. At process exit the operating
// system has ended our threads before our destructors run; nothing of ours
// waits for them then.
//
// We chose this over a module reference per thread that ends with
// FreeLibraryAndExitThread: that covers threads only (a handler the platform
// keeps cannot drop the last reference to the code it runs in), and the
// error status worker waits for as long as the process lives anyway.
namespace connectkit::platform {

// Idempotent and cheap after the first call. Call it before handing
// anything to a thread or to the platform that may outlive the current call.
void KeepModuleLoaded();

}  // namespace connectkit::platform
