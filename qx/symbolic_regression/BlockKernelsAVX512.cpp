#define QX_KERNEL_SET AVX512Kernels
#define QX_KERNEL_NAME "avx512"
#include <qx/symbolic_regression/BlockKernels.ipp>
