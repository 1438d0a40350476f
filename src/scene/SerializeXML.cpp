#include "scene/SerializeXML.h"

#include "core/Log.h"

#include <cmath>
#include <filesystem>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <tinyxml.h>

// ---- Store

CSerializeXMLStore::CSerializeXMLStore(const std::string &file)
    : m_Document(std::make_unique<TiXmlDocument>()), m_File(file) {
  m_Storing = true;
}

CSerializeXMLStore::CSerializeXMLStore(TiXmlElement *element) : m_Current(element), m_Top(element) {
  m_Storing = true;
  m_Saved = true;  // nothing of ours to write
}

CSerializeXMLStore::~CSerializeXMLStore() {
  if (!m_Saved && !m_File.empty()) Save();
}

void CSerializeXMLStore::EnterElement(const char *name) {
  TiXmlElement element(name);
  TiXmlNode *added = m_Current ? m_Current->InsertEndChild(element) : m_Document->InsertEndChild(element);
  m_Current = added ? added->ToElement() : m_Current;
}

void CSerializeXMLStore::LeaveElement() {
  if (!m_Current || m_Current == m_Top) return;
  TiXmlNode *parent = m_Current->Parent();
  m_Current = parent ? parent->ToElement() : nullptr;
}

std::string CSerializeXMLStore::Serialize(const char *name, const std::string &value) {
  if (m_Current) m_Current->SetAttribute(name, value.c_str());
  return value;
}

std::string CSerializeXMLStore::FormatFloat(float value) {
  if (std::fabs(value) < 0.0000005f) return "0";
  char buf[50];
  snprintf(buf, sizeof(buf), "%f", static_cast<double>(value));
  size_t len = strlen(buf);
  while (len > 1 && buf[len - 1] == '0') buf[--len] = 0;
  if (len > 1 && buf[len - 1] == '.') buf[--len] = 0;
  return buf;
}

float CSerializeXMLStore::Serialize(const char *name, float value) {
  Serialize(name, FormatFloat(value));
  return value;
}

int CSerializeXMLStore::Serialize(const char *name, int value) {
  char buf[24];
  snprintf(buf, sizeof(buf), "%d", value);
  Serialize(name, std::string(buf));
  return value;
}

bool CSerializeXMLStore::Serialize(const char *name, bool value) {
  Serialize(name, std::string(value ? "true" : "false"));
  return value;
}

bool CSerializeXMLStore::Save() {
  m_Saved = true;
  if (!m_Document || m_File.empty()) return false;
  FILE *f = fopen(m_File.c_str(), "w");
  if (!f) return false;
  bool ok = m_Document->SaveFile(f);
  ok = !ferror(f) && ok;
  return fclose(f) == 0 && ok;
}

std::string CSerializeXMLStore::ToString() const {
  if (!m_Document) return std::string();
  TiXmlPrinter printer;
  m_Document->Accept(&printer);
  return printer.CStr();
}

// ---- Load

CSerializeXMLLoad::CSerializeXMLLoad() : m_Document(std::make_unique<TiXmlDocument>()) {}

CSerializeXMLLoad::CSerializeXMLLoad(const TiXmlDocument &document, const TiXmlElement *element)
    : m_Document(std::make_unique<TiXmlDocument>(document)) {
  // Find the same element in our copy by its path of child positions.
  std::vector<int> path;
  for (const TiXmlNode *n = element; n && n->Parent(); n = n->Parent()) {
    int index = 0;
    for (const TiXmlNode *s = n->PreviousSibling(); s; s = s->PreviousSibling()) ++index;
    path.push_back(index);
  }
  TiXmlNode *node = m_Document.get();
  for (auto it = path.rbegin(); it != path.rend() && node; ++it) {
    TiXmlNode *child = node->FirstChild();
    for (int i = 0; i < *it && child; ++i) child = child->NextSibling();
    node = child;
  }
  m_Cursor = node ? node->ToElement() : nullptr;
  TiXmlNode *parent = m_Cursor ? m_Cursor->Parent() : nullptr;
  m_Element = parent ? parent->ToElement() : nullptr;
}

CSerializeXMLLoad::~CSerializeXMLLoad() = default;

void CSerializeXMLLoad::StartAtRoot() {
  m_Element = m_Cursor = m_Document->RootElement();
  m_Iterating = false;
  m_Stack.clear();
}

bool LoadXmlDocument(TiXmlDocument &document, const std::string &path) {
  std::error_code error;
  // A missing file is left to the reader, which records why it failed.
  if (!std::filesystem::exists(path, error)) return document.LoadFile(path.c_str());
  if (!std::filesystem::is_regular_file(path, error) || std::filesystem::file_size(path, error) > MaxDocumentBytes)
    return LogError("\"%s\" is not a file of at most %zu MB", path.c_str(), MaxDocumentBytes >> 20);
  return document.LoadFile(path.c_str());
}

bool CSerializeXMLLoad::Load(const std::string &file) {
  m_Document = std::make_unique<TiXmlDocument>();
  bool ok = LoadXmlDocument(*m_Document, file);
  if (ok) StartAtRoot();
  return ok;
}

bool CSerializeXMLLoad::LoadText(const std::string &text) {
  m_Document = std::make_unique<TiXmlDocument>();
  m_Document->Parse(text.c_str());
  if (m_Document->Error()) return false;
  StartAtRoot();
  return true;
}

std::string CSerializeXMLLoad::GetError() {
  if (!m_Document || !m_Document->Error()) return std::string();
  char buf[600];
  int row = m_Document->ErrorRow(), col = m_Document->ErrorCol();
  if (row <= 0 && col <= 0)
    snprintf(buf, sizeof(buf), "\"%s\"", m_Document->ErrorDesc());
  else
    snprintf(buf, sizeof(buf), "\"%s\" at %ld,%ld", m_Document->ErrorDesc(), static_cast<long>(row),
             static_cast<long>(col));
  return buf;
}

void CSerializeXMLLoad::EnterElement(const char *name) {
  m_Stack.push_back({m_Element, m_Cursor, m_Iterating});
  m_Iterating = false;
  m_Element = nullptr;
  if (m_Cursor && !strcmp(m_Cursor->Value(), name)) {
    m_Element = m_Cursor;
    m_Cursor = m_Element->FirstChildElement();
  }
}

void CSerializeXMLLoad::LeaveElement() {
  if (m_Stack.empty()) return;
  Saved s = m_Stack.back();
  m_Stack.pop_back();
  m_Element = s.element;
  m_Cursor = s.cursor;
  m_Iterating = s.iterating;
  if (!m_Iterating) NextChild();
}

void CSerializeXMLLoad::FirstChild() {
  m_Cursor = m_Element ? m_Element->FirstChildElement() : nullptr;
  m_Iterating = true;
}

bool CSerializeXMLLoad::HasChild() { return m_Cursor != nullptr; }

void CSerializeXMLLoad::NextChild() {
  if (m_Cursor) m_Cursor = m_Cursor->NextSiblingElement();
}

std::string CSerializeXMLLoad::GetChildName() { return m_Cursor ? m_Cursor->Value() : std::string(); }

std::string CSerializeXMLLoad::GetChildAttribute(const char *name) {
  const char *v = m_Cursor ? m_Cursor->Attribute(name) : nullptr;
  return v ? v : std::string();
}

const char *CSerializeXMLLoad::Attribute(const char *name) const {
  const char *v = m_Element ? m_Element->Attribute(name) : nullptr;
  return (v && v[0]) ? v : nullptr;
}

std::string CSerializeXMLLoad::Serialize(const char *name, const std::string &value) {
  const char *v = Attribute(name);
  return v ? std::string(v) : value;
}

float CSerializeXMLLoad::Serialize(const char *name, float value) {
  const char *v = Attribute(name);
  return v ? static_cast<float>(atof(v)) : value;
}

int CSerializeXMLLoad::Serialize(const char *name, int value) {
  const char *v = Attribute(name);
  return v ? atoi(v) : value;
}

bool CSerializeXMLLoad::Serialize(const char *name, bool value) {
  const char *v = Attribute(name);
  if (!v) return value;
  return !strcasecmp(v, "true") || !strcmp(v, "1") || !strcasecmp(v, "on");
}
