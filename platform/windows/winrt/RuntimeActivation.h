#pragma once
// Where runtime objects come from. The Wi-Fi Direct port asks this seam
// instead of calling RoActivateInstance and RoGetActivationFactory itself,
// so tests can hand it objects of their own that implement the same ABI
// interfaces (and fail the way a broken runtime would).

#include <memory>

#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win {

class RuntimeActivation {
public:
    virtual ~RuntimeActivation() = default;
    // RoActivateInstance: a new instance of `classId` by its default
    // constructor.
    virtual HRESULT ActivateInstance(const wchar_t* classId, IInspectable** instance) = 0;
    // RoGetActivationFactory: the class's statics or factory interface `iid`.
    virtual HRESULT GetActivationFactory(const wchar_t* classId, const GUID& iid,
                                         void** factory) = 0;
};

// The system's runtime. The first use keeps the process's multithreaded
// apartment alive (CoIncrementMTAUsage), so every thread, the host's
// included, can call the runtime without choosing an apartment of its own.
std::shared_ptr<RuntimeActivation> SystemActivation();

}  // namespace connectkit::win
