# Installs the library so that find_package(QXEvolution) and pkg-config find it.
include(CMakePackageConfigHelpers)

set(QX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/QXEvolution)

install(TARGETS qxevolution EXPORT QXEvolutionTargets)
install(DIRECTORY qx DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "*.ipp" PATTERN "RandomKernels.h" EXCLUDE
  PATTERN "XMLTree.h" EXCLUDE PATTERN "GenesReload.h" EXCLUDE PATTERN "FieldDecoding.h" EXCLUDE
  PATTERN "BlockFunctions.ipp" EXCLUDE PATTERN "BlockKernels.ipp" EXCLUDE PATTERN "HugeAngle.h" EXCLUDE
  PATTERN "ParallelFor.h" EXCLUDE PATTERN "RegressionDefaults.h" EXCLUDE PATTERN "RegressionWorker.h" EXCLUDE)
install(EXPORT QXEvolutionTargets NAMESPACE QXEvolution:: DESTINATION ${QX_CMAKE_DIR})

configure_package_config_file(cmake/QXEvolutionConfig.cmake.in QXEvolutionConfig.cmake
  INSTALL_DESTINATION ${QX_CMAKE_DIR})
write_basic_package_version_file(QXEvolutionConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QXEvolutionConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/QXEvolutionConfigVersion.cmake DESTINATION ${QX_CMAKE_DIR})

# The file finds the package by its own place, wherever `cmake --install --prefix` puts it.
file(RELATIVE_PATH QX_PREFIX_OF_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/qxevolution.pc.in qxevolution.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qxevolution.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
