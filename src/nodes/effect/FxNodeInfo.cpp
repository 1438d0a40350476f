// Effect files to node types: reading the folder, and each parameter of an
// effect to the port a user sets it through.
#include <dirent.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "core/Log.h"
#include "core/Paths.h"
#include "fx/FxManager.h"
#include "nodes/effect/FxNode.h"
#include "scene/NodeFactory.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNEFxInfo::CNEFxInfo(const std::string &typeName, const std::string &path)
    : CNodeInfo(5, typeName.c_str(), [] { return static_cast<CNode *>(new CNEFx); }, "A simple effect"),
      m_Path(path) {}

namespace {
// The UI annotations of one parameter.
struct ParameterUI {
  std::string name, desc;
  const CFxAnnotationValue *min = nullptr, *max = nullptr, *step = nullptr;
};

ParameterUI ReadUI(const CFxParameter &p) {
  ParameterUI ui;
  for (const CFxAnnotationValue &a : p.annotations) {
    if (a.type.base == EFxBase::String) {
      if (a.name == "UIName") ui.name = a.text;
      else if (a.name == "UIDesc") ui.desc = a.text;
      continue;
    }
    bool floats = a.type.base == EFxBase::Float && !a.type.matrix && a.type.arraySize == 0 &&
                  (a.type.cols == 1 || a.type.cols == 3 || a.type.cols == 4);
    if (!floats) continue;
    if (a.name == "UIMin") ui.min = &a;
    else if (a.name == "UIMax") ui.max = &a;
    else if (a.name == "UIStep") ui.step = &a;
  }
  return ui;
}

// `count` floats from an annotation or a default; a single value stands
// for every component, as a scalar does in the effect language.
void Floats(const std::vector<float> *values, float fallback, float *out, int count) {
  for (int i = 0; i < count; ++i) {
    if (!values || values->empty()) out[i] = fallback;
    else out[i] = (*values)[std::min<size_t>(i, values->size() - 1)];
  }
}
const std::vector<float> *ValuesOf(const CFxAnnotationValue *a) { return a ? &a->values : nullptr; }
const std::vector<float> *DefaultsOf(const CFxParameter &p) { return p.defaults.empty() ? nullptr : &p.defaults; }

bool IsType(const CFxParameter &p, EFxBase base, int cols) {
  return p.type.base == base && !p.type.matrix && p.type.arraySize == 0 && p.type.cols == cols;
}

// The in-port for one parameter, or null when a user doesn't set it.
CPort *PortFor(const CFxParameter &p, const std::string &path) {
  ParameterUI ui = ReadUI(p);
  const char *name = ui.name.c_str(), *desc = ui.desc.c_str();
  if (IsType(p, EFxBase::Float, 1)) {
    if (p.semantic == "ELAPSEDTIME" || p.semantic == "TIME") return nullptr;
    float v, step, min, max;
    Floats(DefaultsOf(p), 0.0f, &v, 1);
    Floats(ValuesOf(ui.step), 0.01f, &step, 1);
    Floats(ValuesOf(ui.min), 0.0f, &min, 1);
    Floats(ValuesOf(ui.max), 1.0f, &max, 1);
    return new CPortFloat(name, desc, v, step, min, max);
  }
  if (IsType(p, EFxBase::Float, 3)) {
    Vec3f v, step, min, max;
    Floats(DefaultsOf(p), 0.0f, &v.x, 3);
    Floats(ValuesOf(ui.step), 0.1f, &step.x, 3);
    Floats(ValuesOf(ui.min), -10000.0f, &min.x, 3);
    Floats(ValuesOf(ui.max), 10000.0f, &max.x, 3);
    return new CPortVector(name, desc, v, step, min, max);
  }
  if (IsType(p, EFxBase::Float, 4)) {
    Color4f v, min, max;
    Floats(DefaultsOf(p), 1.0f, &v.r, 4);
    Floats(ValuesOf(ui.min), 0.0f, &min.r, 4);
    Floats(ValuesOf(ui.max), 1.0f, &max.r, 4);
    return new CPortColor(name, desc, v, min, max);
  }
  // The file's own value is not read for these: scene files store them.
  if (IsType(p, EFxBase::Int, 1)) return new CPortInt(name, desc, 0, -10000, 10000);
  if (IsType(p, EFxBase::Bool, 1)) return new CPortBool(name, desc, true);
  if (p.type.base == EFxBase::Texture && p.type.arraySize == 0) {
    if (p.semantic.empty()) {
      LogError("Effect: \"%s\" Param: \"%s\" is missing semantics", path.c_str(), p.name.c_str());
      return nullptr;
    }
    return new CPortTexture(name, desc);
  }
  return nullptr;
}

std::vector<std::string> EffectFiles(const std::string &folder) {
  std::vector<std::string> names;
  if (DIR *dir = opendir(folder.c_str())) {
    while (dirent *e = readdir(dir)) {
      std::string name = e->d_name;
      if (name.empty() || name[0] == '.' || name.size() <= 5) continue;
      if (name.compare(name.size() - 5, 5, ".cgfx") != 0) continue;
      names.push_back(name);
    }
    closedir(dir);
  }
  // Directory order differs between file systems; the catalogue must not.
  std::sort(names.begin(), names.end());
  return names;
}
}  // namespace

CNEFxInfo *CNEFx::CreateInfo(const CFxEffect &effect, const std::string &typeName, const std::string &path) {
  if (typeName.empty()) return nullptr;
  auto *info = new CNEFxInfo(typeName, path);
  info->AddOutPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(new CPortBool("DepthTest", "Enable comparing values against the depth buffer", true));
  info->AddInPort(new CPortBool("DepthWrite", "Write depth values to the depth(Z) buffer", true));
  info->AddInPort(new CPortBool("AALine", "Draw anti aliased lines", false));
  info->AddInPort(new CPortBool("AlphaBlend", "Use the alpha color for blending", false));
  AddBlendValues(info->AddInPort(new CPortInt("SrcBlend", "Source blend mode", 6, 0, 11)), EEffectStateNames::Renderer);
  AddBlendValues(info->AddInPort(new CPortInt("DstBlend", "Destination blend mode", 0, 0, 11)),
                 EEffectStateNames::Renderer);
  AddCullValues(info->AddInPort(new CPortInt("CullMode", "Cull mode", 2, 0, 2)), EEffectStateNames::Renderer);

  for (const CFxParameter &p : effect.Parameters()) {
    if (p.semantic == "VELMORINFO") {
      if (const CFxAnnotationValue *d = p.FindAnnotation("Description"); d && d->type.base == EFxBase::String)
        info->m_Desc = d->text;
      continue;
    }
    if (CPort *port = PortFor(p, path)) info->AddInPort(port);
  }
  return info;
}

void CNEFx::AddNodesToFactory(CNodeFactory &factory, const char *folder) {
  // Reading annotations needs no device: a manager without a render object
  // validates by translating the passes.
  CFxManager manager;
  manager.Init(nullptr);
  for (const std::string &name : EffectFiles(folder)) {
    std::string path = JoinPath(folder, name);
    Log("Loading effect \"%s\"...", path.c_str());
    std::unique_ptr<CFx> fx(manager.LoadEffect(path.c_str()));
    if (!fx) {
      LogError("Failed to load effect. Skipping it");
      continue;
    }
    std::unique_ptr<FxTechniqueRecord> technique(fx->GetBestTechnique());
    if (!technique) {
      // A type whose every instance would fail to restore is no use.
      LogError("Failed to load effect. Skipping it");
      continue;
    }
    factory.AddNodeType(CreateInfo(*fx->Effect(), name.substr(0, name.size() - 5), path));
  }
  manager.Free();
}
