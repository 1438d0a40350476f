#include "expr/ValueList.h"

#include "expr/Exception.h"

namespace ExprEval {

ValueListItem::ValueListItem(std::string name, double value, bool constant)
    : m_Name(std::move(name)), m_Constant(constant), m_Value(value), m_Address(nullptr), m_Default(value) {}

ValueListItem::ValueListItem(std::string name, double *address, double value)
    : m_Name(std::move(name)), m_Constant(false), m_Value(0.0), m_Address(address), m_Default(value) {
  if (!address) throw NullPointerException("ValueListItem::ValueListItem");
  *address = value;
}

const ValueListItem *ValueList::Find(const std::string &name) const {
  for (const auto &item : m_Items)
    if (item->GetName() == name) return item.get();
  return nullptr;
}

void ValueList::Add(const std::string &name, double value, bool constant) {
  if (Find(name)) throw AlreadyExistsException(name);
  m_Items.push_back(std::make_unique<ValueListItem>(name, value, constant));
}

void ValueList::AddAddress(const std::string &name, double *address, double value) {
  if (Find(name)) throw AlreadyExistsException(name);
  if (!address) throw NullPointerException("ValueList::AddAddress");
  m_Items.push_back(std::make_unique<ValueListItem>(name, address, value));
}

double *ValueList::GetAddress(const std::string &name) {
  ValueListItem *item = const_cast<ValueListItem *>(Find(name));
  return item ? item->GetAddress() : nullptr;
}

bool ValueList::IsConstant(const std::string &name) const {
  const ValueListItem *item = Find(name);
  return item && item->IsConstant();
}

void ValueList::Reset() {
  for (auto &item : m_Items) item->Reset();
}

void ValueList::AddDefaultValues() {
  Add("E", 2.718281828459045, true);
  Add("PI", 3.141592653589793, true);
}

}  // namespace ExprEval
