// Applies cubes to images with the best instructions that the machine has: the -inl.h parts are compiled once for each
// set of instructions, and the choice is made at run time.
#include "meridian/lut/cube_kernel.h"

// The sets that are not worth their size: SSSE3, and the extensions of AVX-512 beyond those of servers.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "meridian/lut/cube_kernel_simd.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "meridian/lut/cube_kernel_driver-inl.h"

#if HWY_ONCE
namespace meridian::inline v0_2::detail {

HWY_EXPORT(applyBytes);
HWY_EXPORT(applyWords);
HWY_EXPORT(applyFloats);

void applyCube(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<std::uint8_t>& rows) {
  HWY_DYNAMIC_DISPATCH(applyBytes)(kernel, cells, rows);
}
void applyCube(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<std::uint16_t>& rows) {
  HWY_DYNAMIC_DISPATCH(applyWords)(kernel, cells, rows);
}
void applyCube(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<float>& rows) {
  HWY_DYNAMIC_DISPATCH(applyFloats)(kernel, cells, rows);
}

}  // namespace meridian::inline v0_2::detail
#endif  // HWY_ONCE
