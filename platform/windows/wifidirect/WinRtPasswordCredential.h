#pragma once

#include "platform/ports/WiFiDirect.h"
#include "platform/windows/winrt/RuntimeCall.h"
#include "platform/windows/winrt/abi/Credentials.h"

namespace connectkit::win {

// Windows.Security.Credentials.PasswordCredential.
class WinRtPasswordCredential final : public platform::PasswordCredential {
public:
    explicit WinRtPasswordCredential(ComPtr<abi::IPasswordCredential> credential)
        : credential_(std::move(credential)) {}

    void SetPassword(const std::wstring& password) override;
    std::wstring Password() const override;

    abi::IPasswordCredential* Abi() const { return credential_.Get(); }

private:
    ComPtr<abi::IPasswordCredential> credential_;
};

}  // namespace connectkit::win
