#include "scene/Scene.h"

#include <cstdio>
#include <strings.h>

#include "core/Clock.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "scene/Node.h"
#include "scene/NodeInfo.h"
#include "scene/Port.h"
#include "scene/SceneDocument.h"
#include "scene/SerializeXML.h"

std::string FormatSceneDate(const SceneDate &d) {
  char buf[64];
  snprintf(buf, sizeof(buf), "%4ld%02ld%02ld %02ld:%02ld", static_cast<long>(d.year), static_cast<long>(d.month),
           static_cast<long>(d.day), static_cast<long>(d.hour), static_cast<long>(d.minute));
  return buf;
}

SceneDate ParseSceneDate(const std::string &text) {
  SceneDate d;
  if (text.size() < 14) return d;
  int y = 0, mo = 0, da = 0, h = 0, mi = 0;
  if (sscanf(text.c_str(), "%4d%2d%2d %2d:%2d", &y, &mo, &da, &h, &mi) != 5) return SceneDate();
  d.year = static_cast<uint16_t>(y);
  d.month = static_cast<uint16_t>(mo);
  d.day = static_cast<uint16_t>(da);
  d.hour = static_cast<uint16_t>(h);
  d.minute = static_cast<uint16_t>(mi);
  return d;
}

SceneDate SceneDateNow() {
  WallTime t = GetClock().UtcTime();
  SceneDate d;
  d.year = static_cast<uint16_t>(t.year);
  d.month = static_cast<uint16_t>(t.month);
  d.day = static_cast<uint16_t>(t.day);
  d.hour = static_cast<uint16_t>(t.hour);
  d.minute = static_cast<uint16_t>(t.minute);
  d.second = static_cast<uint16_t>(t.second);
  return d;
}

static void SerializeDate(CSerialize &s, const char *name, SceneDate &date) {
  if (s.m_Storing) {
    if (date.year == 0) date = SceneDateNow();
    s.Serialize(name, FormatSceneDate(date));
  } else {
    date = ParseSceneDate(s.Serialize(name, FormatSceneDate(date)));
  }
}

// Longest warm-up a scene file may ask for, in seconds.
constexpr float MAX_WARMUP_TIME = 60.0f;

void SerializeDagGraph(CDag &dag, CSerialize &s) {
  dag.m_Name = s.Serialize("Name", dag.m_Name);
  dag.m_Desc = s.Serialize("Desc", dag.m_Desc);
  dag.m_Author = s.Serialize("Author", dag.m_Author);
  dag.m_WarmupTime = s.Serialize("WarmupTime", dag.m_WarmupTime);
  // Warm-up runs fixed steps before the first frame: a huge value would
  // never end (and past about 1e6 the float clock stops advancing).
  if (!(dag.m_WarmupTime >= 0.0f && dag.m_WarmupTime <= MAX_WARMUP_TIME)) {
    LogError("WarmupTime %g of scene \"%s\" is outside 0 to %g seconds", static_cast<double>(dag.m_WarmupTime),
             dag.m_Name.c_str(), static_cast<double>(MAX_WARMUP_TIME));
    dag.m_WarmupTime = dag.m_WarmupTime > 0.0f ? MAX_WARMUP_TIME : 0.0f;
  }
  dag.m_SceneType = static_cast<uint32_t>(s.Serialize("SceneType", static_cast<int>(dag.m_SceneType)));
  dag.m_Version = s.Serialize("Version", static_cast<int>(dag.m_Version));
  SerializeDate(s, "Created", dag.m_Created);
  SerializeDate(s, "LastModified", dag.m_LastModified);

  s.EnterElement("Nodes");
  if (s.m_Storing) {
    for (CNode *n : dag.m_Nodes) n->Serialize(s);
  } else {
    for (s.FirstChild(); s.HasChild(); s.NextChild()) {
      std::string type = s.GetChildAttribute("Type");
      CNode *node = dag.AddNode(type.c_str());
      if (!node) {
        LogError("Unknown node type \"%s\"!", type.c_str());
        continue;
      }
      node->Serialize(s);
    }
    dag.m_Modified = false;
  }
  s.LeaveElement();
}

void CScene::SerializeGraph(CSerialize &s) { SerializeDagGraph(*this, s); }

namespace {
void SerializeNameList(CSerialize &s, const char *section, std::vector<std::string> &names) {
  s.EnterElement(section);
  if (s.m_Storing) {
    for (const std::string &n : names) {
      s.EnterElement("Scene");
      s.Serialize("Name", n);
      s.LeaveElement();
    }
  } else {
    for (s.FirstChild(); s.HasChild(); s.NextChild()) names.push_back(s.GetChildAttribute("Name"));
  }
  s.LeaveElement();
}

bool IsFeedbackSource(const CPort *p) {
  return p->m_Type == PT_Texture && p->m_Source && p->m_Source->m_Name == "ColorNext" && p->m_Source->m_Node &&
         p->m_Source->m_Node->m_Info && p->m_Source->m_Node->m_Info->m_TypeName == "RenderToTexture";
}
}  // namespace

void CScene::Serialize(CSerialize &s) {
  s.EnterElement("Scene");
  if (s.m_Mode == SM_ProjectRef) {
    m_File = s.Serialize("File", m_File);
    m_Name = s.Serialize("Name", m_Name);
    if (!s.m_Storing) m_ShowTimeMax = s.Serialize("ShowTimeMax", m_ShowTimeMax);
    s.LeaveElement();
    return;
  }
  if (s.m_Mode == SM_SceneRef) m_File = s.Serialize("File", m_File);
  SerializeGraph(s);

  s.EnterElement("Connections");
  if (s.m_Storing) {
    for (CNode *n : m_Nodes)
      for (CPort *p : n->m_InPorts) {
        auto store = [&](CPort *port) {
          s.EnterElement("Connection");
          s.Serialize("Out", port->m_Source->m_Node->m_Name + "." + port->m_Source->m_Name);
          // Sub-ports are named "Port.x" already.
          s.Serialize("In", n->m_Name + "." + port->m_Name);
          s.LeaveElement();
        };
        if (p->m_NumSubPorts > 0) {
          for (int i = 0; i < p->m_NumSubPorts; ++i)
            if (CPort *sub = p->GetSubPort(i); sub && sub->m_Source && sub->m_Source->m_Node) store(sub);
        } else if (p->IsConnected() && p->m_Source->m_Node) {
          store(p);
        }
      }
  } else {
    for (s.FirstChild(); s.HasChild(); s.NextChild()) {
      std::string out = s.GetChildAttribute("Out"), in = s.GetChildAttribute("In");
      if (!CreateConnection(out.c_str(), in.c_str()))
        LogError("Failed to create connection from \"%s\" to \"%s\"", out.c_str(), in.c_str());
    }
  }
  s.LeaveElement();

  s.EnterElement("SceneCompatibility");
  SerializeNameList(s, "GoodScenes", m_GoodScenes);
  SerializeNameList(s, "BadScenes", m_BadScenes);
  s.LeaveElement();
  s.LeaveElement();

  if (!s.m_Storing)
    for (CNode *n : m_Nodes)
      for (CPort *p : n->m_InPorts)
        if (IsFeedbackSource(p)) m_HasFeedback = true;
}

bool CScene::LoadExternal() {
  if (m_File.empty()) return true;
  const std::string path = Expand(m_File);
  CSerializeXMLLoad load;
  const SceneDocumentStatus status = LoadFirstScene(path, load);
  if (status == SCENEDOC_Unreadable) return LogError("Unable to load scene file \"%s\".", path.c_str());
  if (status != SCENEDOC_Ok) return false;
  load.m_Mode = SM_File;
  Serialize(load);
  return true;
}

static bool ListHas(const std::vector<std::string> &list, const std::string &name) {
  for (const std::string &n : list)
    if (!strcasecmp(n.c_str(), name.c_str())) return true;
  return false;
}

int CScene::GetCompatibility(const CSceneBase *other) const {
  if (!other || other->m_IsLayered) return 1;
  const auto *o = dynamic_cast<const CScene *>(other);
  if (!o) return 1;
  if (ListHas(m_BadScenes, o->m_Name) || ListHas(o->m_BadScenes, m_Name)) return 0;
  if (ListHas(m_GoodScenes, o->m_Name) || ListHas(o->m_GoodScenes, m_Name)) return 2;
  return 1;
}
