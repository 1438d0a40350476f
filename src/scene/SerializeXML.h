#pragma once
// CSerialize over XML documents: a store that writes elements and attributes
// (to a file or under a caller's element) and a load that reads them back,
// either in file order or by iterating children.

#include <memory>
#include <string>
#include <vector>

#include "scene/Serialize.h"

class TiXmlDocument;
class TiXmlElement;

class CSerializeXMLStore : public CSerialize {
 public:
  // Writes into its own document and, at Save or destruction, to `file`.
  explicit CSerializeXMLStore(const std::string &file);
  // Writes under `element`, which belongs to the caller; no file.
  explicit CSerializeXMLStore(TiXmlElement *element);
  ~CSerializeXMLStore() override;

  using CSerialize::Serialize;
  void EnterElement(const char *name) override;
  void LeaveElement() override;
  std::string Serialize(const char *name, const std::string &value) override;
  float Serialize(const char *name, float value) override;
  int Serialize(const char *name, int value) override;
  bool Serialize(const char *name, bool value) override;
  bool Save();

  // The document as text (empty when storing under a caller's element).
  std::string ToString() const;
  TiXmlDocument *Document() const { return m_Document.get(); }

  // The float form: six decimals, trailing zeros and a bare point removed.
  static std::string FormatFloat(float value);

 private:
  std::unique_ptr<TiXmlDocument> m_Document;
  bool m_Saved = false;
  std::string m_File;
  TiXmlElement *m_Current = nullptr;
  TiXmlElement *m_Top = nullptr;  // the caller's element, never left
};

// Reads a scene or project document: only a regular file of at most
// MaxDocumentBytes (a folder or a device named in a file would otherwise
// make the XML reader allocate without end). Logs why it refuses one.
constexpr size_t MaxDocumentBytes = size_t{16} << 20;
bool LoadXmlDocument(TiXmlDocument &document, const std::string &path);

class CSerializeXMLLoad : public CSerialize {
 public:
  CSerializeXMLLoad();
  // Reads a copy of `document` with the cursor on `element`, so that the next
  // EnterElement of its tag enters it.
  CSerializeXMLLoad(const TiXmlDocument &document, const TiXmlElement *element);
  ~CSerializeXMLLoad() override;

  bool Load(const std::string &file);
  bool LoadText(const std::string &text);

  using CSerialize::Serialize;
  std::string GetError() override;
  void EnterElement(const char *name) override;
  void LeaveElement() override;
  void FirstChild() override;
  bool HasChild() override;
  void NextChild() override;
  std::string GetChildName() override;
  std::string GetChildAttribute(const char *name) override;
  std::string Serialize(const char *name, const std::string &value) override;
  float Serialize(const char *name, float value) override;
  int Serialize(const char *name, int value) override;
  bool Serialize(const char *name, bool value) override;

  TiXmlElement *m_Element = nullptr;
  TiXmlElement *m_Cursor = nullptr;
  bool m_Iterating = false;

 private:
  struct Saved {
    TiXmlElement *element, *cursor;
    bool iterating;
  };
  void StartAtRoot();
  const char *Attribute(const char *name) const;

  std::unique_ptr<TiXmlDocument> m_Document;
  std::vector<Saved> m_Stack;
};
