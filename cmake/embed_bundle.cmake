# Writes OUTPUT, a source that defines orx::bundleFiles() with the bytes of FILES.
# Called as: cmake -DOUTPUT=x.cpp "-DFILES=a.res;b.res" -P embed_bundle.cmake
set(arrays "")
set(entries "")
foreach(file IN LISTS FILES)
  get_filename_component(name "${file}" NAME)
  string(MAKE_C_IDENTIFIER "${name}" identifier)
  file(READ "${file}" bytes HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "constexpr std::uint8_t ${identifier}[] = {${bytes}};\n")
  string(APPEND entries "    {\"${name}\", ${identifier}},\n")
endforeach()
file(WRITE "${OUTPUT}" "#include \"messages/bundle_files.h\"

namespace orx {
namespace {
${arrays}
constexpr BundleFile files[] = {
${entries}};
}  // namespace

std::span<const BundleFile> bundleFiles() {
  return files;
}
}  // namespace orx
")
