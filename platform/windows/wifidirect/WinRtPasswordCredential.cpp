#include "platform/windows/wifidirect/WinRtPasswordCredential.h"

#include "platform/windows/winrt/HString.h"

namespace connectkit::win {

void WinRtPasswordCredential::SetPassword(const std::wstring& password) {
    HString text(password);
    Check(credential_->put_Password(text.get()), "IPasswordCredential::put_Password");
}

std::wstring WinRtPasswordCredential::Password() const {
    HString text;
    Check(credential_->get_Password(text.Put()), "IPasswordCredential::get_Password");
    return text.Text();
}

}  // namespace connectkit::win
