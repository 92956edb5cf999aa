#define QX_KERNEL_SET AVX2Kernels
#define QX_KERNEL_NAME "avx2"
#include <qx/symbolic_regression/BlockKernels.ipp>
