#pragma once
// The suite's XML wrappers over tinyxml2: small handles that are never null
// pointers themselves, so a walk over a malformed document checks
// IsElementNull / IsAttributeNull instead of crashing.

#include <cstddef>
#include <memory>
#include <string>

namespace tinyxml2 {
class XMLAttribute;
class XMLDocument;
class XMLElement;
}  // namespace tinyxml2

class VtXmlAttribute {
public:
    VtXmlAttribute() = default;
    explicit VtXmlAttribute(const tinyxml2::XMLAttribute* attribute) : attribute_(attribute) {}

    bool IsAttributeNull() const { return attribute_ == nullptr; }
    // Empty for a null attribute.
    std::string Value() const;

private:
    const tinyxml2::XMLAttribute* attribute_ = nullptr;
};

// An empty name means any element.
class VtXmlElement {
public:
    VtXmlElement() = default;
    explicit VtXmlElement(const tinyxml2::XMLElement* element) : element_(element) {}

    bool IsElementNull() const { return element_ == nullptr; }
    VtXmlElement FirstNode(const std::string& name) const;
    VtXmlAttribute FirstAttribute(const std::string& name) const;
    VtXmlElement NextSiblingElement(const std::string& name) const;

private:
    const tinyxml2::XMLElement* element_ = nullptr;
};

class VtXMLDocument {
public:
    // Larger documents are refused before parsing: the host's memory is not
    // ours to spend on a manifest that a real installation never reaches.
    static constexpr size_t kMaxBytes = 16u << 20;

    VtXMLDocument();
    ~VtXMLDocument();
    VtXMLDocument(const VtXMLDocument&) = delete;
    VtXMLDocument& operator=(const VtXMLDocument&) = delete;

    // Reads the file (UTF-8 path) through the file port and parses it. False
    // when it cannot be read, is too large or is not well-formed XML
    // (tinyxml2 also refuses elements nested deeper than it can walk, and
    // expands no entities beyond the predefined ones).
    bool LoadFile(const std::string& path);
    VtXmlElement RootElement() const;

private:
    std::unique_ptr<tinyxml2::XMLDocument> document_;
};
