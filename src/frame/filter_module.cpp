#include "frame/filter_module.h"

#include "frame/filter_catalogue.h"

namespace ts5 {

ParametersValue LoadParameters(const FilterModule* module, const RegistryValues& values) {
  if (module == nullptr || !module->create) return {};
  auto parameters = module->create();
  for (const ParameterField& field : module->fields) field.load(*parameters, values);
  return parameters;
}

std::string_view SaveTypesOf(const Job& job, const FilterModule* module) {
  TextId types = Descriptor(job.filter).saveTypes;
  if (module != nullptr && module->target && job.parameters)
    types = module->target(*job.parameters, ItemSource(job, 0)).fileTypes.value_or(types);
  return Text(types);
}

void SaveParameters(const FilterModule& module, const FilterParameters& parameters, RegistryValues& values) {
  for (const ParameterField& field : module.fields) field.save(parameters, values);
}

}  // namespace ts5
