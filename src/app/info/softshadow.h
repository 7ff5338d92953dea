#pragma once

// The soft shadow of a drawing: its coverage blurred, in one colour.

#include <QColor>
#include <QImage>

namespace sylvora::app {

// `source` is premultiplied ARGB; the result has its size, and a blur of `blurRadius` pixels
// (a Gaussian of about half that deviation, made of three box passes each way, or of three narrow
// passes for a blur smaller than a box, which still softens). Keep a margin of
// softShadowReach pixels around the drawing in `source` so the blur is not cut at its edges.
QImage makeSoftShadow(const QImage& source, double blurRadius, const QColor& color);

// How far past the drawing's edge its shadow reaches, in pixels: nothing is drawn farther out.
int softShadowReach(double blurRadius);

}  // namespace sylvora::app
