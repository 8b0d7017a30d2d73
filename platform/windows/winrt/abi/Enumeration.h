#pragma once
// Windows.Devices.Enumeration, as far as this library calls it.

#include "platform/windows/winrt/abi/Foundation.h"

namespace connectkit::win::abi {

struct IDeviceInformation : IInspectable {
    static constexpr GUID kIid = {
        0xaba0fb95, 0x4398, 0x489d, {0x8e, 0x44, 0xe6, 0x13, 0x09, 0x27, 0x01, 0x1f}};
    virtual HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) = 0;
};

}  // namespace connectkit::win::abi
