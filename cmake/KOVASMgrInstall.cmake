# SPDX-License-Identifier: MIT
# The library and its headers.
install(TARGETS KOVASMgr LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES
  include/KOVASMgr.h include/KOVASMgrExport.h include/KOVASMgrLog.h include/KOVASMgrPaths.h
  include/KOVASMgrSearch.h include/KOVASMgrWriteLog.h include/OSAdapt.h include/OSAdaptLine.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovasmgr)
# What KOVASMgrWriteLog.h, the one C++ header, needs.
install(FILES common/jmutex.h common/thread_annotations.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovasmgr/common)
