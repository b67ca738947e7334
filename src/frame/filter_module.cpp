#include "frame/filter_module.h"

namespace ts5 {

ParametersValue LoadParameters(const FilterModule* module, const RegistryValues& values) {
  if (module == nullptr || !module->create) return {};
  auto parameters = module->create();
  for (const ParameterField& field : module->fields) field.load(*parameters, values);
  return parameters;
}

void SaveParameters(const FilterModule& module, const FilterParameters& parameters, RegistryValues& values) {
  for (const ParameterField& field : module.fields) field.save(parameters, values);
}

}  // namespace ts5
