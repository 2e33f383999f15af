#include "LocaleEncoding.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <langinfo.h>
#include <locale.h>
#endif

namespace nivora::system {

#ifdef _WIN32 // untried

std::string localeEncoding() { return "windows-" + std::to_string(::GetACP()); }

#else

std::string localeEncoding()
{
    const locale_t own = ::newlocale(LC_CTYPE_MASK, "", nullptr);
    if (!own)
        return "ANSI_X3.4-1968"; // a locale that is not installed stays "C"
    std::string name = ::nl_langinfo_l(CODESET, own);
    ::freelocale(own);
    return name;
}

#endif

} // namespace nivora::system
