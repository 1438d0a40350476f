#pragma once
// Knows every node type by name: makes nodes for scenes and prints the
// catalogue of types. One per process, held through counted references.

#include <string>
#include <vector>

class CNode;
class CNodeInfo;
class TiXmlElement;

class CNodeFactory {
 public:
  // Takes a reference, creating the factory on the first call.
  static CNodeFactory &GetInstance();
  // Drops a reference; the last one destroys the factory.
  static void Release();
  static int RefCount();

  // The function that registers the built-in types, in catalogue order.
  // The node library installs it; the factory itself knows no node class.
  using Registrar = void (*)(CNodeFactory &factory);
  static void SetBuiltinRegistrar(Registrar registrar);

  // Registers the built-in types once; later calls do nothing.
  void Init();
  // A type name already present is refused (and logged): the first stands.
  void AddNodeType(CNodeInfo *info);
  CNode *CreateNode(const char *typeName) const;
  const CNodeInfo *FindType(const char *typeName) const;
  const std::vector<CNodeInfo *> &Types() const { return m_Types; }

  // Appends one NodeInfo element per type, in registration order, to `root`.
  void WriteCatalogue(TiXmlElement &root) const;
  // The whole catalogue document, root NodeTypes, as printed text.
  std::string CatalogueText() const;

  bool m_Initialized = false;

 private:
  CNodeFactory() = default;
  ~CNodeFactory();
  std::vector<CNodeInfo *> m_Types;
};

// Holds a factory reference for a scope or an object's lifetime.
class CNodeFactoryRef {
 public:
  CNodeFactoryRef() : m_Factory(&CNodeFactory::GetInstance()) {}
  ~CNodeFactoryRef() { CNodeFactory::Release(); }
  CNodeFactoryRef(const CNodeFactoryRef &) = delete;
  CNodeFactoryRef &operator=(const CNodeFactoryRef &) = delete;
  CNodeFactory *operator->() const { return m_Factory; }
  CNodeFactory &operator*() const { return *m_Factory; }

 private:
  CNodeFactory *m_Factory;
};
