#include "scene/SceneDocument.h"

#include <tinyxml.h>

#include "core/Paths.h"
#include "scene/SerializeXML.h"

bool LoadSceneDocument(const std::string &path, CSerializeXMLLoad &load) { return load.Load(ResolvePath(path)); }

SceneDocumentStatus LoadFirstScene(const std::string &path, CSerializeXMLLoad &load) {
  if (!LoadSceneDocument(path, load)) return SCENEDOC_Unreadable;
  TiXmlElement *root = load.m_Cursor;
  if (!root || root->ValueStr() != "Velmor") return SCENEDOC_NoScene;
  TiXmlElement *scenes = root->FirstChildElement("Scenes");
  TiXmlElement *scene = scenes ? scenes->FirstChildElement("Scene") : nullptr;
  if (!scene) return SCENEDOC_NoScene;
  load.m_Element = scenes;
  load.m_Cursor = scene;
  return SCENEDOC_Ok;
}
