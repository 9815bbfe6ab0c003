#pragma once

#include "foundation/lumExport.h"

/// Elementary functions whose results are the same, bit for bit, on every machine.
///
/// They use only + - * / and sqrt on IEEE doubles, and published reductions and polynomials (Sun's fdlibm). The error
/// stays below 1 ulp for sine and cosine up to |x| = 1e5, and near 1 ulp elsewhere. Special cases follow the C
/// standard: NaN gives NaN, a sine or cosine of an infinity NaN, an argument outside of a domain NaN.
LUM_API double lumSin(double i_x);
LUM_API double lumCos(double i_x);
/// Both with one argument reduction. Bit-equal to `lumSin` and `lumCos`.
LUM_API void lumSinCos(double i_x, double& o_sin, double& o_cos);
/// The angle of the point (x, y), in [-pi, pi], with the signed zeros of the C standard.
LUM_API double lumAtan2(double i_y, double i_x);
LUM_API double lumAcos(double i_x);
LUM_API double lumAsin(double i_x);
/// Natural logarithm: -infinity at 0.
LUM_API double lumLog(double i_x);
LUM_API double lumExp(double i_x);
