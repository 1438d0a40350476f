#pragma once
// A typed, named value slot on a node. In-ports hold either their own value or,
// while connected, the value pulled from one out-port of another node.

#include <string>

class CNode;
class CSerialize;

enum PortType {
  PT_None = 0,
  PT_Bool = 1,
  PT_Int = 2,
  PT_Float = 3,
  PT_Color = 4,
  PT_String = 5,
  PT_Rect = 6,
  PT_Render = 7,
  PT_Vector = 8,
  PT_Object = 9,
  PT_Effect = 10,
  PT_Texture = 11,
  PT_Mesh = 12,
  PT_Count
};

// The catalogue names of the port types, indexed by type.
const char *PortTypeName(int type);

class CPort {
 public:
  CPort(int type, const char *name, const char *desc);
  virtual ~CPort() = default;
  CPort(const CPort &) = delete;
  CPort &operator=(const CPort &) = delete;

  virtual CPort *FindSubPort(const char *name);
  virtual CPort *GetSubPort(int index);
  virtual std::string GetText(const char *component);
  virtual std::string GetText();
  virtual void SetText(const char *component, const char *text);
  virtual void SetText(const char *text);
  // The common attributes in catalogue mode; subclasses add their value.
  virtual void Serialize(CSerialize &serializer);
  // Pulls the source node and notes whether its value changed; subclasses
  // then copy the value. Plain value ports (bool .. string) do nothing else,
  // so a node skips the call while one is unconnected.
  virtual void Update(float time);
  virtual void Prepare() {}

  bool IsConnected() const { return m_IsInput ? m_Source != nullptr : m_Connected; }
  // A copy for a new node: same type, name, description, owner, source,
  // direction and typed fields; changed and not connected.
  CPort *Clone() const;
  virtual void SetOwner(CNode *node) { m_Node = node; }

  int m_Type;
  std::string m_Name;
  std::string m_Desc;
  CPort *m_Source = nullptr;
  bool m_Connected = false;
  CNode *m_Node = nullptr;
  bool m_IsInput = true;
  bool m_Changed = true;
  int m_NumSubPorts = 0;

 protected:
  // Pull half of Update: runs the source node and carries its change flag.
  // Returns false when there is nothing to copy.
  bool PullSource(float time);
  virtual CPort *CloneTyped() const = 0;
};

// Connects out-port `source` to in-port `target` under the type rule; logs
// and returns false when the types don't match.
bool ConnectPorts(CPort *source, CPort *target);
// Removes whatever source `target` has.
void DisconnectPort(CPort *target);
// Whether a value of type `from` may flow into a port of type `to`.
bool PortTypesCompatible(int from, int to);
