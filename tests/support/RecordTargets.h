#pragma once
// Render targets for tests on the recording renderer: each target's color is
// a recorder texture, and Create, Begin, End and Release become lines of the
// recorder's call list. `fail` makes Create find none.

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "nodes/render/RenderToTextureNode.h"
#include "render/RecordRender.h"
#include "render/RenderTypes.h"
#include "renderogl/TextureManager.h"

class CRecordTargets : public CRenderTargetSource {
 public:
  ~CRecordTargets() override {
    for (auto &t : m_Made) {
      t->m_Color->Release();
      delete t->m_Color;
    }
  }
  CRenderTarget *Create(CRender &render, int width, int height) override {
    Recorder(render).Record("CreateTarget %dx%d", width, height);
    if (fail) return nullptr;
    auto target = std::make_unique<CRenderTarget>();
    target->m_Width = width;
    target->m_Height = height;
    target->m_Color = render.CreateTexture(width, height, 0, TF_A8R8G8B8, TT_RenderTarget);
    target->m_Color->m_Flags |= TEXF_Pooled;
    m_Made.push_back(std::move(target));
    return m_Made.back().get();
  }
  void Begin(CRenderTarget &target, CRender &render) override {
    Recorder(render).Record("BeginTarget %dx%d", target.m_Width, target.m_Height);
  }
  void End(CRenderTarget &target, CRender &render) override {
    Recorder(render).Record("EndTarget %dx%d", target.m_Width, target.m_Height);
  }
  void Release(CRender &render, CTexture *color) override {
    Recorder(render).Record("ReleaseTarget %s", (color->m_Flags & TEXF_Pooled) ? "pooled" : "held");
  }
  CRenderTarget *Last() const { return m_Made.empty() ? nullptr : m_Made.back().get(); }

  bool fail = false;

 private:
  static CRecordRender &Recorder(CRender &render) { return static_cast<CRecordRender &>(render); }
  std::vector<std::unique_ptr<CRenderTarget>> m_Made;
};

// The recorder's calls that begin with one of `prefixes`, in order.
inline std::vector<std::string> CallsStartingWith(const CRecordRender &render,
                                                  std::initializer_list<const char *> prefixes) {
  std::vector<std::string> calls;
  for (const std::string &c : render.m_Calls)
    for (const char *p : prefixes)
      if (c.rfind(p, 0) == 0) {
        calls.push_back(c);
        break;
      }
  return calls;
}
