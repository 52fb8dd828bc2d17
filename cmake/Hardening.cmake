# What dpkg-buildflags of Debian 12 has compilers and linkers do with `hardening=+all`.
target_compile_options(kescorexml_compile_options INTERFACE
  -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
  -Wformat -Werror=format-security)
target_link_options(kescorexml_compile_options INTERFACE LINKER:-z,relro LINKER:-z,now)

# Programs that are independent of their position, where the compiler does not make them anyway.
include(CheckPIESupported)
check_pie_supported()
