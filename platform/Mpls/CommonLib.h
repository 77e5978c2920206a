#pragma once

#include <map>
#include <string_view>

#include "Mpls/CommonLibEntry.h"
#include "Mpls/FwdEqvClass.h"
#include "Orv/Export.h"
#include "Orv/Name.h"
#include "Orv/NamedEntity.h"
#include "Ruvo/ShmTable.h"

namespace Mpls {

// The label bindings that label-distributing protocols publish, one table
// per protocol, each mapping a FEC to its bindings. The LDP table is always
// there (empty until LDP runs); the others, the IS-IS segment-routing
// tables among them, exist by name only once their protocol has created
// them, so a reader must be ready for a name without a table. The LDP
// table is reached by ldpTable() only: table(ldpTableName) asks the tables
// by name, which do not hold it.
class LSPPING_EXPORT CommonLib : public Orv::NamedEntity {
public:
  using BindingTable = Ruvo::ShmTable<FwdEqvClass, CommonLibEntry>;

  static constexpr std::string_view ldpTableName = "ldp";
  static constexpr std::string_view isisV4TableName = "isisV4";
  static constexpr std::string_view isisV6TableName = "isisV6";

  explicit CommonLib(const Orv::Name &name);

  // Named "<name>/ldp" in corruption messages.
  const BindingTable &ldpTable() const { return ldpTable_; }
  BindingTable &ldpTable() { return ldpTable_; }

  // The table of that name, or null when there is none. Named
  // "<name>/<table name>" in corruption messages.
  const BindingTable *table(const Orv::Name &tableName) const;
  BindingTable *table(const Orv::Name &tableName);
  // The table of that name, created empty if there is none yet.
  BindingTable &tableIs(const Orv::Name &tableName);
  void tableDel(const Orv::Name &tableName);
  std::size_t tableCount() const { return tables_.size(); }

  // One handler for the LDP table and every table by name, those created
  // later included.
  void corruptionHandlerIs(const Ruvo::CorruptionHandler &handler);

private:
  BindingTable ldpTable_;
  std::map<Orv::Name, BindingTable> tables_;
  Ruvo::CorruptionHandler corruptionHandler_;
};

} // namespace Mpls
