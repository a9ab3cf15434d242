#include "protogen/reserved_names.h"

#include <iterator>
#include <regex>
#include <set>
#include <sstream>

namespace protogen {
namespace {

using Names = std::set<std::string>;

Names Words(const std::string& text) {
  std::istringstream words(text);
  return Names(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>());
}

// The keywords of all versions of C++, and typeof, which compilers add. Words that are special only
// in some places, such as final, are free.
const char kKeywords[] = R"(
alignas alignof and and_eq asm auto bitand bitor bool break case catch char char16_t char32_t
char8_t class co_await co_return co_yield compl concept const const_cast consteval constexpr
constinit continue decltype default delete do double dynamic_cast else enum explicit export extern
false float for friend goto if inline int long mutable namespace new noexcept not not_eq nullptr
operator or or_eq private protected public register reinterpret_cast requires return short signed
sizeof static static_assert static_cast struct switch template this thread_local throw true try
typedef typeid typename typeof union unsigned using virtual void volatile wchar_t while xor xor_eq
)";

// Macros of the compiler in its GNU mode, of the C library and of POSIX. Many reach every program,
// since the headers of the run-time include the system's.
const char kMacros[] = R"(
i386 linux mips unix

alloca assert assert_perror basename be16toh be32toh be64toh bswap_16 bswap_32 bswap_64 clrbit
d_fileno errno h_addr h_errno howmany htobe16 htobe32 htobe64 htole16 htole32 htole64 htonl htons
ifa_broadaddr ifa_dstaddr ifc_buf ifc_req ifr_addr ifr_bandwidth ifr_broadaddr ifr_data ifr_dstaddr
ifr_flags ifr_hwaddr ifr_ifindex ifr_map ifr_metric ifr_mtu ifr_name ifr_netmask ifr_newname
ifr_qlen ifr_slave isclr isset issubnormal le16toh le32toh le64toh major makedev math_errhandling
minor msg_cbytes ntohl ntohs offsetof powerof2 pthread_cleanup_pop pthread_cleanup_pop_restore_np
pthread_cleanup_push pthread_cleanup_push_defer_np roundup s6_addr s6_addr16 s6_addr32 sa_handler
sa_sigaction sched_priority setbit setjmp si_addr si_addr_lsb si_arch si_band si_call_addr si_fd
si_int si_lower si_overrun si_pid si_pkey si_ptr si_status si_stime si_syscall si_timerid si_uid
si_upper si_utime si_value sigev_notify_attributes sigev_notify_function sigmask sigsetjmp st_atime
st_ctime st_mtime stderr stdin stdout strdupa strndupa timeradd timerclear timercmp timerisset
timersub va_arg va_copy va_end va_start

I
)";

// Whether `name` is a macro of <cinttypes>, such as PRId64 and SCNuMAX.
bool IsFormatMacro(const std::string& name) {
  static const std::regex format("(PRI|SCN)[bdioux]([0-9]|FAST|LEAST|MAX|PTR).*");
  return std::regex_match(name, format);
}

}  // namespace

std::string TakenBy(const std::string& name) {
  static const Names keywords = Words(kKeywords), macros = Words(kMacros);
  if (keywords.count(name) != 0) return "a C++ keyword";
  if (macros.count(name) != 0 || IsFormatMacro(name)) return "a macro";
  return "";
}

}  // namespace protogen
