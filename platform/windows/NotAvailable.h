#pragma once
// Ports the Windows backend does not implement yet answer "not implemented";
// each says so in the log once, the first time it is used.

namespace connectkit::win {

// Logs the notice for `port` unless it was logged before.
void SayNotAvailable(const char* port);

}  // namespace connectkit::win
