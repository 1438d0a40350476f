// Every effect file we install works where pictures are made: it compiles
// and validates on the GL in use, and the catalogue an editor reads lists it
// with its description and a port for each parameter a user sets.
#include <GL/glew.h>
#include <gtest/gtest.h>
#include <tinyxml.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "fx/FxManager.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "renderogl/GLTestSupport.h"
#include "scene/NodeFactory.h"

namespace {
std::string EffectFolder() { return std::string(VELMOR_SOURCE_ROOT) + "/assets/nodes/effect"; }

std::vector<std::string> ShippedEffectTypes() {
  std::vector<std::string> types;
  for (const auto &e : std::filesystem::directory_iterator(EffectFolder()))
    if (e.path().extension() == ".cgfx") types.push_back(e.path().stem().string());
  std::sort(types.begin(), types.end());
  return types;
}

std::string Annotation(const CFxParameter &p, const char *name) {
  const CFxAnnotationValue *a = p.FindAnnotation(name);
  return a && a->type.base == EFxBase::String ? a->text : std::string();
}

// The in-port names and types of each NodeInfo of the catalogue text.
struct CatalogueEntry {
  std::string desc;
  std::map<std::string, std::string> inPorts;
  std::set<std::string> outPorts;
};

std::map<std::string, CatalogueEntry> ReadCatalogue(const std::string &text) {
  auto attribute = [](const TiXmlElement *e, const char *name) {
    const char *v = e->Attribute(name);
    return std::string(v ? v : "");
  };
  auto ports = [](const TiXmlElement *n, const char *kind, auto add) {
    if (const TiXmlElement *list = n->FirstChildElement(kind))
      for (const TiXmlElement *p = list->FirstChildElement("Port"); p; p = p->NextSiblingElement("Port")) add(p);
  };
  std::map<std::string, CatalogueEntry> entries;
  TiXmlDocument doc;
  doc.Parse(text.c_str());
  const TiXmlElement *root = doc.RootElement();
  if (!root) return entries;
  for (const TiXmlElement *n = root->FirstChildElement("NodeInfo"); n; n = n->NextSiblingElement("NodeInfo")) {
    CatalogueEntry &entry = entries[attribute(n, "Type")];
    entry.desc = attribute(n, "Desc");
    ports(n, "InPorts", [&](const TiXmlElement *p) { entry.inPorts[attribute(p, "Name")] = attribute(p, "Type"); });
    ports(n, "OutPorts", [&](const TiXmlElement *p) { entry.outPorts.insert(attribute(p, "Name")); });
  }
  return entries;
}
}  // namespace

TEST(PictureShippedEffects, EachCompilesValidatesAndIsCataloguedWithItsPorts) {
  VELMOR_REQUIRE_DISPLAY();
  const std::vector<std::string> types = ShippedEffectTypes();
  ASSERT_GE(types.size(), 10u);

  GLWindow window(64, 48);
  ASSERT_TRUE(window.Ok());
  ASSERT_NE(window.render.m_FxManager, nullptr);

  // Built as velmor-tool catalogue builds it.
  InstallBuiltinNodes();
  CNodeFactoryRef factory;
  factory->Init();
  CNEFx::AddNodesToFactory(*factory, EffectFolder().c_str());
  const std::map<std::string, CatalogueEntry> catalogue = ReadCatalogue(factory->CatalogueText());

  for (const std::string &type : types) {
    SCOPED_TRACE(type);
    std::unique_ptr<CFx> fx(window.render.m_FxManager->LoadEffect((EffectFolder() + "/" + type + ".cgfx").c_str()));
    ASSERT_TRUE(fx) << "does not compile";
    std::unique_ptr<FxTechniqueRecord> technique(fx->GetBestTechnique());
    EXPECT_TRUE(technique) << "no technique validates on this GL";
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    auto found = catalogue.find(type);
    ASSERT_NE(found, catalogue.end()) << "missing from the catalogue";
    const CatalogueEntry &entry = found->second;
    EXPECT_EQ(entry.outPorts, std::set<std::string>{"Effect"});
    for (const char *common : {"DepthTest", "DepthWrite", "AALine", "AlphaBlend", "SrcBlend", "DstBlend", "CullMode"})
      EXPECT_TRUE(entry.inPorts.count(common)) << common;
    for (const CFxParameter &p : fx->Effect()->Parameters()) {
      if (p.semantic == "VELMORINFO") {
        EXPECT_EQ(entry.desc, Annotation(p, "Description"));
        continue;
      }
      const std::string name = Annotation(p, "UIName");
      if (name.empty()) continue;
      auto port = entry.inPorts.find(name);
      ASSERT_NE(port, entry.inPorts.end()) << "no port for " << p.name << " (" << name << ")";
      if (p.type.base == EFxBase::Texture) {
        EXPECT_EQ(port->second, "Texture") << name;
      }
    }
  }
}
