#include "app/value_holders.h"

#include "app/bug_alert.h"

namespace {
std::size_t checkedSlot(int index)
{
    if (index < 0 || index > 9)
        throw Fault(fault::SubscriptOutOfRange);
    return static_cast<std::size_t>(index);
}
} // namespace

std::size_t clsStoreStrArray::slot(int index) { return checkedSlot(index); }
std::size_t clsStoreBoolArray::slot(int index) { return checkedSlot(index); }
