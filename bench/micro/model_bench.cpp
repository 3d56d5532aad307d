// Handles and attribute sets: their texts, read and written, and a look-up.
#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "micro/sample.h"
#include "model/attribute_set.h"
#include "model/config_handle.h"

namespace orx::bench {

namespace {

// Resources that a system inherits from a prototype, in the old format: the longest handle texts,
// and an export that has to convert.
std::vector<CMConfigHandle> inheritedHandles() {
  std::vector<CMConfigHandle> handles;
  for (std::uint32_t id = 1; id <= 5000; ++id) {
    handles.push_back(CMConfigHandle::createPrototypeInheritedResourceHandle(
        CMConfigHandle(handle_type::managedSystem, id),
        CMConfigHandle(handle_type::resourceGroup, id * 3),
        CMConfigHandle(handle_type::resource, id * 7)));
  }
  return handles;
}

template <typename Handles>
std::vector<HandleText> textsOf(const Handles& handles,
                                HandleText (CMConfigHandle::*write)() const) {
  std::vector<HandleText> texts;
  for (const CMConfigHandle& handle : handles) texts.push_back((handle.*write)());
  return texts;
}

template <typename Texts>
std::size_t sizeOf(const Texts& texts) {
  return std::accumulate(
      texts.begin(), texts.end(), std::size_t{0},
      [](std::size_t sum, const auto& text) { return sum + std::string_view(text).size(); });
}

std::size_t sizeOf(const std::vector<HandleText>& texts) {
  return std::accumulate(
      texts.begin(), texts.end(), std::size_t{0},
      [](std::size_t sum, const HandleText& text) { return sum + text.view().size(); });
}

void exportHandles(benchmark::State& state, const std::vector<CMConfigHandle>& handles) {
  const std::size_t bytes = sizeOf(textsOf(handles, &CMConfigHandle::exportText));
  measureEach(state, handles, bytes,
              [](const CMConfigHandle& handle) { return handle.exportText(); });
}

void importHandles(benchmark::State& state, const std::vector<CMConfigHandle>& handles) {
  const std::vector<HandleText> texts = textsOf(handles, &CMConfigHandle::exportText);
  CMConfigHandle handle;
  measureEach(state, texts, sizeOf(texts),
              [&](const HandleText& text) { return handle.importHndl(text.view()); });
}

void exportHandle(benchmark::State& state) {
  exportHandles(state, sample().handles);
}
void exportInheritedHandle(benchmark::State& state) {
  exportHandles(state, inheritedHandles());
}
void importHandle(benchmark::State& state) {
  importHandles(state, sample().handles);
}
void importInheritedHandle(benchmark::State& state) {
  importHandles(state, inheritedHandles());
}

void handleToHexadecimal(benchmark::State& state) {
  const std::vector<CMConfigHandle>& handles = sample().handles;
  measureEach(state, handles, sizeOf(textsOf(handles, &CMConfigHandle::externText)),
              [](const CMConfigHandle& handle) { return handle.externText(); });
}

void handleFromHexadecimal(benchmark::State& state) {
  const auto texts = textsOf(sample().handles, &CMConfigHandle::externText);
  CMConfigHandle handle;
  measureEach(state, texts, sizeOf(texts), [&](const HandleText& text) {
    handle.setFromExternChar(text.view());
    return handle.bytes();
  });
}

std::vector<std::unique_ptr<CMAttributeSet>> sampleSets() {
  std::vector<std::unique_ptr<CMAttributeSet>> sets;
  for (const std::string& text : sample().attributeTexts) {
    sets.push_back(std::make_unique<CMAttributeSet>(text.c_str(), 1));
  }
  return sets;
}

void readAttributeSet(benchmark::State& state) {
  const std::vector<std::string>& texts = sample().attributeTexts;
  measureEach(state, texts, sizeOf(texts),
              [](const std::string& text) { return CMAttributeSet(text.c_str(), 1).entries(); });
}

void writeAttributeSet(benchmark::State& state) {
  measureEach(state, sampleSets(), sizeOf(sample().attributeTexts),
              [](const std::unique_ptr<CMAttributeSet>& set) { return set->text(); });
}

// The use count, which models have and others have not.
void findAttribute(benchmark::State& state) {
  measureEach(state, sampleSets(), 0,
              [](const std::unique_ptr<CMAttributeSet>& set) { return set->findAttrKey(17, 0); });
}

BENCHMARK(exportHandle)->Name("model/exportHandle");
BENCHMARK(exportInheritedHandle)->Name("model/exportInheritedHandle");
BENCHMARK(importHandle)->Name("model/importHandle");
BENCHMARK(importInheritedHandle)->Name("model/importInheritedHandle");
BENCHMARK(handleToHexadecimal)->Name("model/handleToHexadecimal");
BENCHMARK(handleFromHexadecimal)->Name("model/handleFromHexadecimal");
BENCHMARK(readAttributeSet)->Name("model/readAttributeSet");
BENCHMARK(writeAttributeSet)->Name("model/writeAttributeSet");
BENCHMARK(findAttribute)->Name("model/findAttribute");

}  // namespace
}  // namespace orx::bench
