# SPDX-License-Identifier: MIT
# The library, its headers, and the adapters one directory each. Where no adapter lies in a host's own
# directory, the library looks in <libdir>/kovasmgr.
install(TARGETS KOVASMgr LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES
  include/KOVASMgr.h include/KOVASMgrExport.h include/KOVASMgrLog.h include/KOVASMgrPaths.h
  include/KOVASMgrSearch.h include/KOVASMgrWriteLog.h include/OSAdapt.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovasmgr)
# What KOVASMgrWriteLog.h, the one C++ header, needs.
install(FILES common/jmutex.h common/thread_annotations.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovasmgr/common)
