#pragma once
// The matrices the engine feeds to float4x4 parameters, chosen by semantic
// (exact case). "cf" sets the engine's row-major matrix column by column, so
// that mul(M, v) in the shader is the engine's row-vector product v * E; "rf"
// sets it row by row.

#include <string>

class CFxParameter;

enum class EFxMatrix : unsigned char {
  WorldViewProjection, World, WorldInverseTranspose, ViewInverse, View, Projection, WorldView, ViewProjection
};

struct FxMatrixSemantic {
  const char *semantic;
  EFxMatrix matrix;
  bool columns;  // cf; else rf
};

// Null for any other semantic.
const FxMatrixSemantic *FindMatrixSemantic(const std::string &semantic);

// Sets a float4x4 parameter from the world, view and projection matrices
// (row-major, row vectors); does nothing for other types and semantics.
// Returns whether it set the parameter.
bool SetMatrixParameter(CFxParameter &parameter, const float world[16], const float view[16], const float proj[16]);

// Row-major helpers, also for tests.
void FxMultiply(const float a[16], const float b[16], float out[16]);
void FxAffineInverse(const float m[16], float out[16]);
void FxTranspose(const float m[16], float out[16]);
