#pragma once
// One walk reads and writes every persistent object:
//   field = serializer.Serialize(name, field);
// stores when the serializer stores and loads when it loads.

#include <string>

enum SerializeMode {
  SM_File = 0,       // an ordinary file
  SM_SceneRef = 1,   // a scene with its file reference on top
  SM_Catalogue = 2,  // the catalogue form of a port or node
  SM_ProjectRef = 3  // a project that refers to its scenes by file
};

class CSerialize {
 public:
  virtual ~CSerialize() = default;
  virtual std::string GetError() { return std::string(); }
  virtual void EnterElement(const char *name) = 0;
  virtual void LeaveElement() = 0;
  virtual void FirstChild() {}
  virtual bool HasChild() { return false; }
  virtual void NextChild() {}
  virtual std::string GetChildName() { return std::string(); }
  virtual std::string GetChildAttribute(const char *) { return std::string(); }
  virtual std::string Serialize(const char *name, const std::string &value) = 0;
  virtual float Serialize(const char *name, float value) = 0;
  virtual int Serialize(const char *name, int value) = 0;
  virtual bool Serialize(const char *name, bool value) = 0;

  // Avoids the pointer-to-bool overload for string literals.
  std::string Serialize(const char *name, const char *value) { return Serialize(name, std::string(value)); }

  bool m_Storing = false;
  int m_Mode = SM_File;
};
