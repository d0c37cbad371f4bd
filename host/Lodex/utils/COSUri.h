#pragma once

#include <Lodex/utils/CString.h>

#include <string>
#include <vector>

namespace Lodex {

/// Address of an object of the host or of an item of one: "lodex:SGrid/Reek/property/PORO". Path components are separated
/// by "/"; "%" and two hexadecimal digits stand for any byte, so names may hold "/" and blanks. A text without a scheme is
/// a path of its own; a plain name is a path of one component, also one with a ":", since a scheme other than "lodex"
/// counts only where a "/" follows. Empty components are left out.
class COSUri {
public:
    COSUri() = default;
    explicit COSUri(const CString& text);
    COSUri(const CString& type, const CString& object, const CString& item_kind = {}, const CString& item = {});

    /// Scheme without the colon; empty when the text had none.
    [[nodiscard]] const CString& scheme() const { return scheme_; }
    [[nodiscard]] const std::vector<CString>& path() const { return path_; }
    /// Last component of the path, decoded; empty for an empty path.
    [[nodiscard]] CString name() const { return path_.empty() ? CString() : path_.back(); }
    /// Type and name of the object ("SGrid", "Reek"); empty when the path has only one component.
    [[nodiscard]] CString object_type() const { return path_.size() > 1 ? path_[0] : CString(); }
    [[nodiscard]] CString object_name() const { return path_.size() > 1 ? path_[1] : CString(); }
    /// The address as text, encoded.
    [[nodiscard]] CString text() const;

private:
    CString scheme_;
    std::vector<CString> path_;
};

} // namespace Lodex
