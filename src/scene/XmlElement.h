#pragma once
// A plain element tree for the small XML messages that drive the engine
// (host commands and their replies): owned by value, so it can be copied
// between threads, and free of any XML library type outside this folder.

#include <functional>
#include <string>
#include <utility>
#include <vector>

class CSerialize;
class CNodeFactory;

struct XmlElement {
  std::string tag;
  std::vector<std::pair<std::string, std::string>> attributes;  // in document order
  std::vector<XmlElement> children;

  XmlElement() = default;
  explicit XmlElement(std::string name) : tag(std::move(name)) {}
  // The attribute's text; empty when it is missing.
  std::string Get(const char *name) const;
  bool Has(const char *name) const;
  // Replaces the attribute's text, or appends the attribute.
  XmlElement &Set(const char *name, const std::string &value);
  XmlElement &Add(XmlElement child);
};

// The document's root element, attributes and child elements (text is
// dropped). False when the text isn't well-formed XML.
bool ParseXmlElement(const std::string &text, XmlElement &root);
// The element as XML text on one line: attribute values escape line breaks.
std::string PrintXmlElement(const XmlElement &element);
// Runs a storing walk under a scratch element named `tag`, with the
// serializer's mode set to `mode`, and returns that element.
XmlElement StoreToXmlElement(const char *tag, int mode, const std::function<void(CSerialize &)> &walk);
// The node type catalogue, root NodeTypes.
XmlElement CatalogueElement(const CNodeFactory &factory);
