#pragma once
// The group owner's DHCP rules in Windows Firewall, removed through the
// firewall's COM policy object (INetFwPolicy2) rather than by running netsh:
// the COM answer tells "no such rule" apart from "not allowed", which netsh's
// exit code does not.

#include "platform/ports/Firewall.h"

namespace connectkit::win {

// Every inbound rule opened for the DHCP service carries this name; there may
// be several of them (one per firewall profile), and all are removed.
inline constexpr const wchar_t* kDhcpRuleName = L"ConnectKit Wi-Fi Direct DHCP (UDP 67)";

class WinFirewall final : public platform::Firewall {
public:
    // 0 when no rule of that name is left. COM failures become Win32 codes:
    // an HRESULT of the Win32 facility gives its code, E_NOTIMPL gives
    // ERROR_CALL_NOT_IMPLEMENTED, a missing firewall class gives
    // ERROR_NOT_SUPPORTED, and any other HRESULT is passed on unchanged.
    uint32_t RemoveDhcpRules() override;
};

}  // namespace connectkit::win
