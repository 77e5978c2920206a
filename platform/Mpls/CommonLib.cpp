#include "Mpls/CommonLib.h"

namespace Mpls {

CommonLib::CommonLib(const Orv::Name &name)
    : NamedEntity(name),
      ldpTable_(name.stringValue() + "/" + std::string(ldpTableName)) {}

const CommonLib::BindingTable *
CommonLib::table(const Orv::Name &tableName) const {
  const auto it = tables_.find(tableName);
  return it == tables_.end() ? nullptr : &it->second;
}

CommonLib::BindingTable *CommonLib::table(const Orv::Name &tableName) {
  const auto it = tables_.find(tableName);
  return it == tables_.end() ? nullptr : &it->second;
}

CommonLib::BindingTable &CommonLib::tableIs(const Orv::Name &tableName) {
  const auto [it, added] = tables_.try_emplace(
      tableName, name().stringValue() + "/" + tableName.stringValue());
  if (added) {
    it->second.corruptionHandlerIs(corruptionHandler_);
  }
  return it->second;
}

void CommonLib::tableDel(const Orv::Name &tableName) {
  tables_.erase(tableName);
}

void CommonLib::corruptionHandlerIs(const Ruvo::CorruptionHandler &handler) {
  corruptionHandler_ = handler;
  ldpTable_.corruptionHandlerIs(handler);
  for (auto &[tableName, table] : tables_) {
    table.corruptionHandlerIs(handler);
  }
}

} // namespace Mpls
