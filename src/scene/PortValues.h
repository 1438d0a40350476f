#pragma once
// The value-carrying port types. A file value and a typed-in value obey the
// port's range; a value arriving over a connection does not.

#include <map>
#include <memory>
#include <string>

#include "scene/Port.h"

struct Vec3f {
  float x = 0, y = 0, z = 0;
  bool operator==(const Vec3f &) const = default;
};
struct Color4f {
  float r = 0, g = 0, b = 0, a = 0;
};

// At or below min gives min; else at or above max gives max.
float ApplyRange(float value, float min, float max);
int ApplyRange(int value, int min, int max);

class CPortBool : public CPort {
 public:
  CPortBool(const char *name, const char *desc, bool def);
  std::string GetText() override;
  void SetText(const char *text) override;
  void Serialize(CSerialize &s) override;
  void Update(float time) override;
  bool m_Value;

 protected:
  CPort *CloneTyped() const override;
};

class CPortInt : public CPort {
 public:
  CPortInt(const char *name, const char *desc, int def, int min, int max);
  std::string GetText() override;
  void SetText(const char *text) override;
  void Serialize(CSerialize &s) override;
  void Update(float time) override;
  // Adds a display name for a number; a number keeps its first name.
  CPortInt *AddValue(int number, const char *name);

  int m_Value, m_Min, m_Max;
  std::unique_ptr<std::map<int, std::string>> m_Values;

 protected:
  CPort *CloneTyped() const override;
};

class CPortFloat : public CPort {
 public:
  CPortFloat(const char *name, const char *desc, float def, float step, float min, float max);
  std::string GetText() override;
  void SetText(const char *text) override;
  void Serialize(CSerialize &s) override;
  void Update(float time) override;
  float m_Value, m_Min, m_Max, m_Step;

 protected:
  CPort *CloneTyped() const override;
};

class CPortVector : public CPort {
 public:
  CPortVector(const char *name, const char *desc, Vec3f def, Vec3f step, Vec3f min, Vec3f max);
  std::string GetText(const char *component) override;
  std::string GetText() override;
  void SetText(const char *component, const char *text) override;
  void SetText(const char *text) override;
  void Serialize(CSerialize &s) override;
  void Update(float time) override;
  Vec3f m_Value, m_Step, m_Min, m_Max;

 protected:
  CPort *CloneTyped() const override;
};

class CPortColor : public CPort {
 public:
  CPortColor(const char *name, const char *desc, Color4f def, Color4f min, Color4f max);
  std::string GetText() override;
  void SetText(const char *text) override;
  void Serialize(CSerialize &s) override;
  void Update(float time) override;
  Color4f m_Value, m_Min, m_Max;

 protected:
  CPort *CloneTyped() const override;
};

class CPortString : public CPort {
 public:
  CPortString(const char *name, const char *desc, const char *def);
  std::string GetText() override;
  void SetText(const char *text) override;
  void Serialize(CSerialize &s) override;
  void Update(float time) override;
  std::string m_Value;

 protected:
  CPort *CloneTyped() const override;
};

// Left, top, right, bottom: how rectangles are declared.
struct Rect4f {
  float l = 0, t = 0, r = 0, b = 0;
};

class CPortRect : public CPort {
 public:
  CPortRect(const char *name, const char *desc, Rect4f def, Rect4f step, Rect4f min, Rect4f max);
  CPort *FindSubPort(const char *name) override;
  CPort *GetSubPort(int index) override;
  std::string GetText() override;
  void SetText(const char *text) override;
  void Serialize(CSerialize &s) override;
  void Update(float time) override;
  void SetOwner(CNode *node) override;

  CPortFloat x, y, w, h;

 protected:
  CPort *CloneTyped() const override;

 private:
  CPortRect(const CPortRect &other);
  CPortFloat *Sub(int index);
};

// The viewport rectangle node types share: the whole unit, in fractions.
CPortRect *MakeViewportPort(const char *name, const char *desc);
