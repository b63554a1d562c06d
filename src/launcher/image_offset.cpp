// The package offset word of the launcher image.
//
// The packing tool finds the text "_BINARYIMAGEOFFSET_" in the image and overwrites its
// first four bytes with the file offset of the package, as a little-endian 32-bit number;
// while they still read "_BIN", no package was ever attached. The word is initialised
// data, written by no code of the program, and this is the image's only copy of the text:
// the tool refuses an image that holds it twice.

extern char exportedoffset[20];
char exportedoffset[20] = "_BINARYIMAGEOFFSET_";
