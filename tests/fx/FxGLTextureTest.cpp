// Samplers on the driver, and the noise textures the renderer makes.
#include "FxGLSupport.h"
#include "fx/FxNoiseTextures.h"
#include "render/Color.h"
#include "renderogl/TextureOGL.h"

#include <set>

namespace {
Float4 Unpack(uint32_t c) {
  return {(c & 255) / 255.0f, (c >> 8 & 255) / 255.0f, (c >> 16 & 255) / 255.0f, (c >> 24) / 255.0f};
}

// Distinct texels: texel i gets red 10 * (i + 1), green 255 - 20 * i.
uint32_t Texel(int i) { return PackColor((10 * (i + 1)) / 255.0f, (255 - 20 * i) / 255.0f, (i % 3) / 255.0f, 1); }

const uint32_t kFaces[6] = {0xff0000ffu, 0xff00ff00u, 0xffff0000u, 0xff00ffffu, 0xffff00ffu, 0xffffff00u};
}  // namespace

class FxGLSamplerTest : public FxGLTest {
 protected:
  CTexture *Make(int w, int h, int d) {
    CTexture *t = m_Render->CreateTexture(w, h, d, TF_A8R8G8B8, TT_Normal);
    if (!t) return nullptr;
    m_Textures.emplace_back(t);
    uint32_t *texels = t->Lock();
    for (int i = 0; i < t->TexelCount(); ++i) texels[i] = Texel(i);
    t->Unlock();
    return t;
  }
  void TearDown() override {
    for (auto &t : m_Textures) t->Release(), t->Release();  // a second release finds nothing to free
    m_Textures.clear();
    if (m_Cube) glDeleteTextures(1, &m_Cube);
    FxGLTest::TearDown();
  }
  std::vector<std::unique_ptr<CTexture>> m_Textures;
  GLuint m_Cube = 0;
};

TEST_F(FxGLSamplerTest, EachSamplerKindReadsItsTexels) {
  CTexture *line = Make(4, 0, 0), *square = Make(2, 2, 0), *volume = Make(2, 2, 2);
  ASSERT_TRUE(line && square && volume);
  // Lines and pictures filter through their mip maps unless told otherwise; volumes have none.
  for (auto [t, filter] :
       {std::pair{line, GL_LINEAR_MIPMAP_LINEAR}, {square, GL_LINEAR_MIPMAP_LINEAR}, {volume, GL_LINEAR}}) {
    auto *ogl = dynamic_cast<CTextureOGL *>(t);
    GLint minFilter = 0;
    glBindTexture(ogl->Target(), ogl->m_Name);
    glGetTexParameteriv(ogl->Target(), GL_TEXTURE_MIN_FILTER, &minFilter);
    glBindTexture(ogl->Target(), 0);
    EXPECT_EQ(minFilter, filter) << t->Dimension() << "D";
  }
  glGenTextures(1, &m_Cube);
  glBindTexture(GL_TEXTURE_CUBE_MAP, m_Cube);
  for (int f = 0; f < 6; ++f)
    glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + static_cast<GLenum>(f), 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 &kFaces[f]);
  glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
  const char *kStates = "MinFilter = Nearest; MagFilter = Nearest;";
  std::string text = QuadEffect(
      std::string("texture gLineTex;\n") + "sampler1D gLine = sampler_state { Texture = <gLineTex>; " + kStates +
      " };\nsampler2D gSquare = sampler_state { " + kStates + " };\nsampler3D gVolume = sampler_state { " + kStates +
      " };\nsamplerCUBE gCube = sampler_state { " + kStates + " };\n"
      "float4 c; int kind;\n"
      "float4 PS() : COLOR {\n"
      "  if (kind == 1) return tex1D(gLine, c.x);\n"
      "  if (kind == 2) return tex2D(gSquare, c.xy);\n"
      "  if (kind == 3) return tex3D(gVolume, c.xyz);\n"
      "  return texCUBE(gCube, c.xyz);\n"
      "}\n");
  CFx *fx = Parse(text);
  FxTechniqueRecord *t = Technique(fx);
  ASSERT_TRUE(t);
  // The 1D texture through its texture parameter, the others through the
  // sampler as a node binds them.
  fx->GetNamedParameter("gLineTex")->SetTexture(m_Manager->TextureName(line));
  fx->SetupSampler(*fx->GetNamedParameter("gSquare"), square);
  fx->SetupSampler(*fx->GetNamedParameter("gVolume"), volume);
  fx->GetNamedParameter("gCube")->SetTexture(m_Cube);
  auto sample = [&](int kind, Float4 c) {
    Set(*fx, "kind", {static_cast<float>(kind)});
    Set(*fx, "c", {c[0], c[1], c[2], c[3]});
    Draw(fx, t);
    return Read();
  };
  // Texel centres of each kind, x fastest: {kind, width, height, depth}.
  for (auto [kind, w, h, d] : {std::array{1, 4, 1, 1}, {2, 2, 2, 1}, {3, 2, 2, 2}})
    for (int i = 0; i < w * h * d; ++i)
      EXPECT_THAT(sample(kind, {(i % w + 0.5f) / w, (i / w % h + 0.5f) / h, (i / (w * h) + 0.5f) / d, 0}),
                  Near4(Unpack(Texel(i)), 1e-3f))
          << kind << "D texel " << i;
  const Float4 directions[6] = {{1, 0, 0, 0}, {-1, 0, 0, 0}, {0, 1, 0, 0}, {0, -1, 0, 0}, {0, 0, 1, 0}, {0, 0, -1, 0}};
  for (int f = 0; f < 6; ++f)
    EXPECT_THAT(sample(4, directions[f]), Near4(Unpack(kFaces[f]), 1e-3f)) << "cube face " << f;
}

TEST_F(FxGLSamplerTest, SamplerStatesApplyToTheBoundTexture) {
  CTexture *line = Make(4, 0, 0);
  ASSERT_TRUE(line);
  auto run = [&](const std::string &states, float x) {
    std::string text = QuadEffect("sampler1D s = sampler_state { MinFilter = Nearest; " + states +
                                  " };\nfloat x;\nfloat4 PS() : COLOR { return tex1D(s, x); }\n");
    return Run(text, [&](CFx &fx) {
      fx.SetupSampler(*fx.GetNamedParameter("s"), line);
      Set(fx, "x", {x});
    });
  };
  Float4 t0 = Unpack(Texel(0)), t1 = Unpack(Texel(1)), t3 = Unpack(Texel(3));
  EXPECT_THAT(run("MagFilter = Nearest; WrapS = Repeat;", 1.125f), Near4(t0, 1e-3f));
  EXPECT_THAT(run("MagFilter = Nearest; WrapS = ClampToEdge;", 1.125f), Near4(t3, 1e-3f));
  EXPECT_THAT(run("MagFilter = Nearest; WrapS = ClampToEdge;", 0.3f), Near4(t1, 1e-3f));
  // Linear at 0.3: 70% of the way from texel 0's centre to texel 1's.
  Float4 mixed{};
  for (int i = 0; i < 4; ++i) mixed[i] = 0.3f * t0[i] + 0.7f * t1[i];
  EXPECT_THAT(run("MagFilter = Linear; WrapS = ClampToEdge;", 0.3f), Near4(mixed, 4e-3f));
}

TEST_F(FxGLSamplerTest, TheRendererMakesTheNoiseTexturesEffectsSample) {
  CTexture *volume = CNoiseTextures::Get(0, NOISE_FastPerlin);
  CTexture *line = CNoiseTextures::Get(0, NOISE_Permutation1D);
  CTexture *square = CNoiseTextures::Get(0, NOISE_Permutation2D);
  ASSERT_TRUE(volume && line && square);
  EXPECT_EQ(volume->Dimension(), 3);
  EXPECT_EQ(volume->TexelCount(), 32 * 32 * 32);
  EXPECT_EQ(line->Dimension(), 1);
  std::string text = QuadEffect(
      "sampler1D gPermutation1dSampler = sampler_state { MinFilter = Point; MagFilter = Point; WrapS = Repeat; };\n"
      "sampler2D gPermutation2dSampler = sampler_state { MinFilter = Point; MagFilter = Point; };\n"
      "float2 at; bool flat;\n"
      "float4 PS() : COLOR { return flat ? tex1D(gPermutation1dSampler, at.x) : tex2D(gPermutation2dSampler, at); }\n");
  auto sample = [&](bool flat, int x, int y) {
    return Run(text, [&](CFx &fx) {
      fx.SetupSampler(*fx.GetNamedParameter("gPermutation1dSampler"), line);
      fx.SetupSampler(*fx.GetNamedParameter("gPermutation2dSampler"), square);
      Set(fx, "at", {(x + 0.5f) / 256, (y + 0.5f) / 256});
      Set(fx, "flat", {flat ? 1.0f : 0.0f});
    });
  };
  for (int x : {0, 37, 255}) {
    float p = NoisePerm(x) / 255.0f;
    EXPECT_THAT(sample(true, x, 0), Near4((Float4{p, p, p, p}), 1e-3f)) << "x " << x;
  }
  auto perm = [](int i) { return NoisePerm(i) / 255.0f; };
  for (auto [x, y] : {std::pair{5, 9}, std::pair{255, 255}}) {
    Float4 expected = {perm(NoisePerm(y) + x), perm(NoisePerm(y) + x + 1), perm(NoisePerm(y + 1) + x),
                       perm(NoisePerm(y + 1) + x + 1)};
    EXPECT_THAT(sample(false, x, y), Near4(expected, 1e-3f)) << x << ", " << y;
  }
}

TEST(FxNoise, PermutationAndPeriodicNoise) {
  std::set<int> seen;
  for (int i = 0; i < 256; ++i) seen.insert(NoisePerm(i));
  EXPECT_EQ(seen.size(), 256u);
  EXPECT_EQ(*seen.rbegin(), 255);
  EXPECT_EQ(NoisePerm(256 + 17), NoisePerm(17));
  float low = 0, high = 0;
  for (int i = 0; i < 200; ++i) {
    float x = i * 0.173f - 9, y = i * 0.311f, z = 4 - i * 0.057f;
    for (int s : {0, 8}) {
      float n = PeriodicNoise(x, y, z, s);
      SCOPED_TRACE(i);
      EXPECT_NEAR(PeriodicNoise(x + 8, y, z, s), n, 1e-4f);
      EXPECT_NEAR(PeriodicNoise(x, y - 8, z + 16, s), n, 1e-4f);
      low = std::min(low, n);
      high = std::max(high, n);
    }
    EXPECT_EQ(PeriodicNoise(std::floor(x), std::floor(y), std::floor(z), 0), 0.0f);
  }
  EXPECT_GE(low, -1.1f);
  EXPECT_LE(high, 1.1f);
  EXPECT_GT(high - low, 0.8f) << "the noise hardly varies";
  EXPECT_NE(PeriodicNoise(1.5f, 2.5f, 3.5f, 0), PeriodicNoise(1.5f, 2.5f, 3.5f, 8));
}
