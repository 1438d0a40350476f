#pragma once
// The record of one node type: how to make it and its prototype ports, which
// carry every default, range and description the type has.

#include <string>
#include <vector>

class CNode;
class CPort;

class CNodeInfo {
 public:
  using Creator = CNode *(*)();
  CNodeInfo(int group, const char *typeName, Creator creator, const char *desc = "");
  virtual ~CNodeInfo();  // effect file types carry their file
  CNodeInfo(const CNodeInfo &) = delete;
  CNodeInfo &operator=(const CNodeInfo &) = delete;

  // Takes ownership of the prototype and returns it (for Values and the like).
  template <typename P>
  P *AddInPort(P *port) {
    AddPort(port, true);
    return port;
  }
  template <typename P>
  P *AddOutPort(P *port) {
    AddPort(port, false);
    return port;
  }

  // A new node of this type: created, ports cloned from the prototypes in
  // order, owners set, then Init. Null, logged, when Init fails or did not
  // find a port it looked up: such a node would run on null ports.
  CNode *Instantiate() const;

  Creator m_Creator;
  int m_Group;
  std::string m_TypeName;
  std::string m_Desc;
  std::vector<CPort *> m_InPorts;
  std::vector<CPort *> m_OutPorts;
  bool m_BuiltIn = false;

 private:
  void AddPort(CPort *port, bool input);
};
