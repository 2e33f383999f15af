#pragma once

#include <proj.h>

#include <memory>

namespace nivora::cs {

// Owners of what PROJ returns besides its objects. Each belongs to the thread that holds its context's lock.

struct PjListDestroy
{
    void operator()(PJ_OBJ_LIST *list) const { proj_list_destroy(list); }
};
using PjList = std::unique_ptr<PJ_OBJ_LIST, PjListDestroy>;

struct PjIntListDestroy
{
    void operator()(int *list) const { proj_int_list_destroy(list); }
};
using PjIntList = std::unique_ptr<int, PjIntListDestroy>;

struct PjFactoryDestroy
{
    void operator()(PJ_OPERATION_FACTORY_CONTEXT *context) const
    {
        proj_operation_factory_context_destroy(context);
    }
};
using PjFactory = std::unique_ptr<PJ_OPERATION_FACTORY_CONTEXT, PjFactoryDestroy>;

struct PjAreaDestroy
{
    void operator()(PJ_AREA *area) const { proj_area_destroy(area); }
};
using PjArea = std::unique_ptr<PJ_AREA, PjAreaDestroy>;

} // namespace nivora::cs
