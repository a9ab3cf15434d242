// The macros that a schema must not meet: the compiler says which the headers of the C++ library,
// the C library and POSIX define.
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "protogen/schema.h"
#include "tests/protogen/scratch.h"

namespace protogen {
namespace testing {
namespace {

// Without those of C++ that only work in later versions, and those of C that C++ does not have. The
// last two lines are the system's and POSIX's.
const char kHeaders[] = R"(
algorithm any array atomic bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes
climits clocale cmath complex condition_variable csetjmp csignal cstdarg cstddef cstdint cstdio
cstdlib cstring ctime cuchar cwchar cwctype deque exception filesystem forward_list fstream
functional future initializer_list iomanip ios iosfwd iostream istream iterator limits list locale
map memory memory_resource mutex new numeric optional ostream queue random ratio regex
scoped_allocator set shared_mutex sstream stack stdexcept streambuf string string_view system_error
thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant
vector
assert.h complex.h ctype.h errno.h fenv.h float.h inttypes.h limits.h locale.h math.h setjmp.h
signal.h stdarg.h stdbool.h stddef.h stdint.h stdio.h stdlib.h string.h tgmath.h time.h uchar.h
wchar.h wctype.h
alloca.h byteswap.h endian.h sys/param.h sys/sysmacros.h
aio.h arpa/inet.h dirent.h dlfcn.h fcntl.h fmtmsg.h fnmatch.h ftw.h glob.h grp.h iconv.h langinfo.h
libgen.h monetary.h mqueue.h net/if.h netdb.h netinet/in.h netinet/tcp.h nl_types.h poll.h pthread.h
pwd.h regex.h sched.h search.h semaphore.h spawn.h strings.h sys/ipc.h sys/mman.h sys/msg.h
sys/resource.h sys/select.h sys/sem.h sys/shm.h sys/socket.h sys/stat.h sys/statvfs.h sys/time.h
sys/times.h sys/types.h sys/uio.h sys/un.h sys/utsname.h sys/wait.h syslog.h tar.h termios.h
ulimit.h unistd.h utime.h utmpx.h wordexp.h
)";

// All that the compiler defines in its GNU mode, with and without optimization.
std::istringstream Macros() {
  ScratchFolder scratch;
  std::ostringstream source;
  std::istringstream headers(kHeaders);
  for (std::string header; headers >> header;) {
    source << "#if __has_include(<" << header << ">)\n#include <" << header << ">\n#endif\n";
  }
  scratch.Write("all.cc", source.str());
  const std::string command =
      Quoted(PROTOGEN_COMPILER) + " -std=gnu++17 -w -dM -E " + Quoted(scratch.path() + "/all.cc");
  const CommandResult plain = RunCommand(command), optimized = RunCommand(command + " -O2");
  EXPECT_EQ(plain.exit_code, 0) << plain.output;
  EXPECT_EQ(optimized.exit_code, 0) << optimized.output;
  return std::istringstream(plain.output + optimized.output);
}

TEST(ReservedNamesTest, MacrosAreRefused) {
  // A field or a message for each macro, on a line of its own.
  std::ostringstream schema;
  schema << "syntax = \"proto2\"; package zarvo.calibration.scratch;\n";
  std::vector<std::string> names;
  std::set<std::string> seen;
  std::istringstream macros = Macros();
  for (std::string line; std::getline(macros, line);) {
    std::string name = line.substr(std::string("#define ").size());
    name = name.substr(0, name.find_first_of(" ("));
    if (name[0] == '_' || !seen.insert(name).second) continue;  // no schema's name begins with _
    names.push_back(name);
    if (std::isupper(static_cast<unsigned char>(name[0])) != 0) {
      schema << "message " << name << " { optional float x = 1; }\n";
    } else {
      schema << "message Has" << names.size() << " { optional float " << name << " = 1; }\n";
    }
  }
  ASSERT_GT(names.size(), 1000u);

  ScratchFolder scratch;
  scratch.Write("macros.proto", schema.str());
  std::set<std::string> refused;
  const Schema loaded(scratch.path(), "macros.proto");
  for (const std::string& error : loaded.errors())
    refused.insert(error.substr(0, error.find(": ")));
  for (size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(refused.count("macros.proto:" + std::to_string(i + 2)), 1u)
        << names[i] << " is a macro here; protogen/reserved_names.cc does not know it";
  }
}

}  // namespace
}  // namespace testing
}  // namespace protogen
