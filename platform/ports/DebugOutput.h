#pragma once

#include <string>

namespace connectkit::platform {

// The debugger's output channel (what DebugView or an attached debugger
// shows). Fire and forget: nobody may be listening.
class DebugOutput {
public:
    virtual ~DebugOutput() = default;
    virtual void Write(const std::wstring& text) = 0;
};

}  // namespace connectkit::platform
