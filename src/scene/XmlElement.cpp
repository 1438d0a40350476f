#include "scene/XmlElement.h"

#include <tinyxml.h>

#include "scene/NodeFactory.h"
#include "scene/SerializeXML.h"

namespace {
// Messages are small and flat; a deeper document is refused before the
// recursive reader could run out of stack on it.
constexpr int kMaxDepth = 64;

bool WithinDepth(const std::string &text) {
  int depth = 0;
  char quote = 0;
  bool inTag = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quote) {
      if (c == quote) quote = 0;
    } else if (inTag && (c == '"' || c == '\'')) {
      quote = c;
    } else if (c == '<' && i + 1 < text.size()) {
      const char next = text[i + 1];
      inTag = true;
      if (next == '/') --depth;
      else if (next != '?' && next != '!' && ++depth > kMaxDepth) return false;
    } else if (inTag && c == '>') {
      inTag = false;
      if (i > 0 && text[i - 1] == '/') --depth;
    }
  }
  return true;
}

XmlElement FromTiXml(const TiXmlElement &source) {
  XmlElement out(source.Value());
  for (const TiXmlAttribute *a = source.FirstAttribute(); a; a = a->Next()) out.attributes.emplace_back(a->Name(), a->Value());
  for (const TiXmlElement *c = source.FirstChildElement(); c; c = c->NextSiblingElement()) out.children.push_back(FromTiXml(*c));
  return out;
}

void Escape(std::string &out, const std::string &text) {
  for (const char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\n': out += "&#10;"; break;
      case '\r': out += "&#13;"; break;
      default: out += c;
    }
  }
}

void Print(std::string &out, const XmlElement &e) {
  out += '<';
  out += e.tag;
  for (const auto &[name, value] : e.attributes) {
    out += ' ';
    out += name;
    out += "=\"";
    Escape(out, value);
    out += '"';
  }
  if (e.children.empty()) {
    out += " />";
    return;
  }
  out += '>';
  for (const XmlElement &c : e.children) Print(out, c);
  out += "</";
  out += e.tag;
  out += '>';
}
}  // namespace

std::string XmlElement::Get(const char *name) const {
  for (const auto &[n, v] : attributes)
    if (n == name) return v;
  return std::string();
}

bool XmlElement::Has(const char *name) const {
  for (const auto &a : attributes)
    if (a.first == name) return true;
  return false;
}

XmlElement &XmlElement::Set(const char *name, const std::string &value) {
  for (auto &a : attributes)
    if (a.first == name) {
      a.second = value;
      return *this;
    }
  attributes.emplace_back(name, value);
  return *this;
}

XmlElement &XmlElement::Add(XmlElement child) {
  children.push_back(std::move(child));
  return *this;
}

bool ParseXmlElement(const std::string &text, XmlElement &root) {
  if (!WithinDepth(text)) return false;
  TiXmlDocument document;
  document.Parse(text.c_str());
  if (document.Error() || !document.RootElement()) return false;
  root = FromTiXml(*document.RootElement());
  return true;
}

std::string PrintXmlElement(const XmlElement &element) {
  std::string out;
  Print(out, element);
  return out;
}

XmlElement StoreToXmlElement(const char *tag, int mode, const std::function<void(CSerialize &)> &walk) {
  TiXmlElement scratch(tag);
  {
    CSerializeXMLStore store(&scratch);
    store.m_Mode = mode;
    walk(store);
  }
  return FromTiXml(scratch);
}

XmlElement CatalogueElement(const CNodeFactory &factory) {
  TiXmlElement root("NodeTypes");
  factory.WriteCatalogue(root);
  return FromTiXml(root);
}
