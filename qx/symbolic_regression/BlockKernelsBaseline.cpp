#define QX_KERNEL_SET BaselineKernels
#define QX_KERNEL_NAME "baseline"
#include <qx/symbolic_regression/BlockKernels.ipp>
