#pragma once
// The one reader of scene (.vms) and project (.vmp) documents. Both have the
// root Velmor with the play list in Scenes; a scene file's scene is the
// first Scene there.

#include <string>

class CSerializeXMLLoad;

// The document at `path` (looked up case-insensitively in its folder when
// not found as written), the loader at its root for a project's walk. False
// when the file is missing or isn't well-formed XML.
bool LoadSceneDocument(const std::string &path, CSerializeXMLLoad &load);

enum SceneDocumentStatus { SCENEDOC_Ok, SCENEDOC_Unreadable, SCENEDOC_NoScene };

// The document with the loader's cursor on its first Velmor/Scenes/Scene,
// so that EnterElement("Scene") enters it.
SceneDocumentStatus LoadFirstScene(const std::string &path, CSerializeXMLLoad &load);
