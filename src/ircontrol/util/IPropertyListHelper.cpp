#include "util/IPropertyListHelper.h"

#include "util/CPropertyListHelper.h"

namespace ircontrol {

std::shared_ptr<IPropertyListHelper> IPropertyListHelper::Create(void* list) {
    return std::make_shared<CPropertyListHelper>(list);
}

std::shared_ptr<IPropertyListHelper> IPropertyListHelper::Create() {
    return std::make_shared<CPropertyListHelper>();
}

}  // namespace ircontrol
