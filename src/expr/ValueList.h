#pragma once
// The variables and constants that expressions see. Parsed trees keep the
// addresses handed out here, so entries never move and the list must
// outlive every tree parsed against it.

#include <memory>
#include <string>
#include <vector>

namespace ExprEval {

class ValueListItem {
 public:
  // An entry with its own storage.
  ValueListItem(std::string name, double value, bool constant);
  // An entry that lives at address (not constant); value is written there.
  ValueListItem(std::string name, double *address, double value);

  const std::string &GetName() const { return m_Name; }
  bool IsConstant() const { return m_Constant; }
  double *GetAddress() { return m_Address ? m_Address : &m_Value; }
  double GetDefault() const { return m_Default; }
  void Reset() { *GetAddress() = m_Default; }

 private:
  std::string m_Name;
  bool m_Constant;
  double m_Value;
  double *m_Address;
  double m_Default;
};

class ValueList {
 public:
  ValueList() = default;
  ValueList(const ValueList &) = delete;
  ValueList &operator=(const ValueList &) = delete;

  // Both throw AlreadyExistsException for a name already present.
  void Add(const std::string &name, double value, bool constant);
  void AddAddress(const std::string &name, double *address, double value = 0.0);

  // Null if the name is absent.
  double *GetAddress(const std::string &name);
  bool IsConstant(const std::string &name) const;
  // Every entry back to the value it was added with.
  void Reset();
  // E and PI, constant.
  void AddDefaultValues();
  void Clear() { m_Items.clear(); }

  size_t GetCount() const { return m_Items.size(); }
  ValueListItem &GetItem(size_t index) { return *m_Items[index]; }

 private:
  const ValueListItem *Find(const std::string &name) const;

  std::vector<std::unique_ptr<ValueListItem>> m_Items;
};

}  // namespace ExprEval
