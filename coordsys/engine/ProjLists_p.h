#pragma once

#include <platform/system/ReleasedBy.h>

#include <QString>
#include <QStringList>

#include <proj.h>

#include <memory>

namespace nivora::cs {

// Owners of what PROJ returns besides its objects. Each belongs to the thread that holds its context's lock.
using PjList = std::unique_ptr<PJ_OBJ_LIST, ReleasedBy<proj_list_destroy>>;
using PjIntList = std::unique_ptr<int, ReleasedBy<proj_int_list_destroy>>;
using PjFactory =
    std::unique_ptr<PJ_OPERATION_FACTORY_CONTEXT, ReleasedBy<proj_operation_factory_context_destroy>>;
using PjArea = std::unique_ptr<PJ_AREA, ReleasedBy<proj_area_destroy>>;
using PjStringList = std::unique_ptr<char *, ReleasedBy<proj_string_list_destroy>>;

inline QStringList textsOf(const PjStringList &list)
{
    QStringList texts;
    for (char **text = list.get(); text && *text; ++text)
        texts << QString::fromUtf8(*text);
    return texts;
}

/// Hands every PROJ_CRS_INFO of the database's systems to \p take, of one authority or (null) of all, those
/// that \p limits let through.
template <typename Take>
void forEachSystem(PJ_CONTEXT *context, const char *authority, const PROJ_CRS_LIST_PARAMETERS *limits,
                   Take &&take)
{
    int count = 0;
    const std::unique_ptr<PROJ_CRS_INFO *, ReleasedBy<proj_crs_info_list_destroy>> list(
        proj_get_crs_info_list_from_database(context, authority, limits, &count));
    for (int i = 0; list && i < count; ++i)
        take(*list.get()[i]);
}

} // namespace nivora::cs
