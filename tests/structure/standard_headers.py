# SPDX-License-Identifier: MIT
"""The names of the headers that need no library beyond the C and C++ run time."""

C_HEADERS = set("""
assert.h complex.h ctype.h errno.h fenv.h float.h inttypes.h iso646.h limits.h locale.h math.h
setjmp.h signal.h stdalign.h stdarg.h stdatomic.h stdbool.h stddef.h stdint.h stdio.h stdlib.h
stdnoreturn.h string.h tgmath.h threads.h time.h uchar.h wchar.h wctype.h
""".split())

_CPP_HEADERS = set("""
algorithm any array atomic bitset charconv chrono codecvt complex condition_variable deque exception
filesystem forward_list fstream functional future initializer_list iomanip ios iosfwd iostream
istream iterator limits list locale map memory memory_resource mutex new numeric optional ostream
queue random ratio regex scoped_allocator set shared_mutex sstream stack stdexcept streambuf string
string_view strstream system_error thread tuple type_traits typeindex typeinfo unordered_map
unordered_set utility valarray variant vector cxxabi.h
""".split())

_POSIX_HEADERS = set("""
dirent.h dlfcn.h execinfo.h fcntl.h glob.h poll.h pthread.h pwd.h sched.h semaphore.h termios.h
unistd.h sys/auxv.h sys/file.h sys/ioctl.h sys/mman.h sys/resource.h sys/select.h sys/stat.h
sys/time.h sys/types.h sys/wait.h
""".split())

SYSTEM_HEADERS = (C_HEADERS | {"c" + name[:-2] for name in C_HEADERS} | _CPP_HEADERS
                  | _POSIX_HEADERS)
