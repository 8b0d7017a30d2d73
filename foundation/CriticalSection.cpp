#include "connectkit/CriticalSection.h"

#include "platform/Platform.h"

namespace ConnectKit {

CCriticalSection::CCriticalSection()
    : mutex_(connectkit::platform::Current().clock().NewMutex(true, 4000)) {}

CCriticalSection::~CCriticalSection() = default;

void CCriticalSection::Lock() {
    mutex_->lock();
}

void CCriticalSection::Unlock() {
    mutex_->unlock();
}

}  // namespace ConnectKit
