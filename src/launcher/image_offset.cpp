// The package offset word of the launcher image.
//
// The packing tool finds the text "_BINARYIMAGEOFFSET_" in the image and overwrites its
// first four bytes with the file offset of the package, as a little-endian 32-bit number;
// while they still read "_BIN", no package was ever attached. The tool patches the first
// copy of the text it meets, and other objects of the program may carry the same text as a
// constant. So the word is read-only data in an object of its own that includes nothing and
// stands first on the link line: its copy comes before every other one in the image.

extern const char exportedoffset[20];
const char exportedoffset[20] = "_BINARYIMAGEOFFSET_";
