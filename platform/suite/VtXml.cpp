#include "platform/suite/VtXml.h"

#include <tinyxml2.h>

#include "platform/Platform.h"
#include "platform/suite/DEString.h"

namespace {

const char* NameOrAny(const std::string& name) {
    return name.empty() ? nullptr : name.c_str();
}

}  // namespace

std::string VtXmlAttribute::Value() const {
    return attribute_ ? attribute_->Value() : "";
}

VtXmlElement VtXmlElement::FirstNode(const std::string& name) const {
    return VtXmlElement(element_ ? element_->FirstChildElement(NameOrAny(name)) : nullptr);
}

VtXmlAttribute VtXmlElement::FirstAttribute(const std::string& name) const {
    if (!element_) {
        return VtXmlAttribute();
    }
    return VtXmlAttribute(name.empty() ? element_->FirstAttribute()
                                       : element_->FindAttribute(name.c_str()));
}

VtXmlElement VtXmlElement::NextSiblingElement(const std::string& name) const {
    return VtXmlElement(element_ ? element_->NextSiblingElement(NameOrAny(name)) : nullptr);
}

VtXMLDocument::VtXMLDocument() : document_(std::make_unique<tinyxml2::XMLDocument>()) {}

VtXMLDocument::~VtXMLDocument() = default;

bool VtXMLDocument::LoadFile(const std::string& path) {
    document_->Clear();
    if (path.empty() || path.find('\0') != std::string::npos) {
        return false;
    }
    std::string text;
    long read = connectkit::platform::Current().fileContents().Read(
        DE::UTF8ToUnicode(path), [&text](const uint8_t* data, size_t size) {
            if (size > kMaxBytes - text.size()) {
                return false;
            }
            text.append(reinterpret_cast<const char*>(data), size);
            return true;
        });
    return read == 0 && document_->Parse(text.data(), text.size()) == tinyxml2::XML_SUCCESS;
}

VtXmlElement VtXMLDocument::RootElement() const {
    return VtXmlElement(document_->RootElement());
}
