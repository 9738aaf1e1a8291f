// The version, for whoever looks into the file: strings lib_quor_parser.so | grep '^lib_quor_parser
// '
extern "C" {

// Kept by the linker, though nothing reads it.
extern const char quor_version_text[];
const char quor_version_text[] = "lib_quor_parser " QUOR_VERSION;

}  // extern "C"
