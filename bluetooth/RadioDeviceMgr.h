#pragma once
// The PC's radios as the platform lists them, kept between calls and handed
// out by kind. The platform lists asynchronously; this turns the listing
// into a wait of at most 3000 ms. A list of fewer than two radios is listed
// again at every look-up, and a listing that outlives its wait may still
// complete later and replace the list.

#include <memory>
#include <mutex>

#include "platform/ports/Radios.h"

namespace connectkit::platform {
class Mutex;
}

// What a caller owns to hold the radio it asked for: FindRadio assigns the
// found radio into it. The platform object is shared (the projection's Radio
// is a reference too) and read under a lock of its own, so a thread that
// only looks at the radio never waits for a look-up under way.
class RadioHolder {
public:
    std::shared_ptr<connectkit::platform::Radio> Get() const;
    void Set(std::shared_ptr<connectkit::platform::Radio> radio);

private:
    mutable std::mutex mutex_;
    std::shared_ptr<connectkit::platform::Radio> radio_;
};

class RadioDeviceMgr {
public:
    static RadioDeviceMgr* GetInstance();

    // False for a null `radio`, when no radio of `kind` is listed, and on
    // any platform failure. Null entries of the list are passed over.
    bool FindRadio(connectkit::platform::RadioKind kind, RadioHolder* radio);
    // Lists the radios again unless at least two are known.
    void LoadRadios();

    ~RadioDeviceMgr();
    RadioDeviceMgr(const RadioDeviceMgr&) = delete;
    RadioDeviceMgr& operator=(const RadioDeviceMgr&) = delete;

private:
    // What the completion handler writes. The handler keeps it alive, so a
    // completion that arrives after the manager is gone still finds it.
    struct Listing;

    RadioDeviceMgr();
    // Throws what the platform throws when the listing cannot start.
    void ListAndWait();

    std::shared_ptr<Listing> listing_;
    // Recursive: FindRadio holds it while it lists.
    std::unique_ptr<connectkit::platform::Mutex> mutex_;
};
