#include <Lodex/utils/PathName.h>

namespace Lodex {

CString PathName::basename(const CString& path)
{
    const std::size_t slash = path.str().rfind('/');
    return slash == std::string::npos ? path : CString(path.str().substr(slash + 1));
}

CString PathName::dirname(const CString& path)
{
    const std::size_t slash = path.str().rfind('/');
    return slash == std::string::npos ? CString() : CString(path.str().substr(0, slash));
}

} // namespace Lodex
