// Hard copy: the scene rendered off-screen at a chosen size and written as
// an image file.
#pragma once

#include <string>

namespace zentol {

struct Session;

enum class ImageFormat { Bmp = 1, Png = 2, Pcx = 3, Jpg = 4 };

// "<job>_NN": the running number capped at 99, two digits.
std::string hard_copy_stem(const std::string& job, int counter);
std::string image_extension(ImageFormat f);

// Size of the resolution choice 1..5: 640 f by 480 f, f = 1 for the first
// choice and 2 (choice - 1) after it, so choice 4 is 3840 by 2880.
int resolution_factor(int choice);

// Command 64: dialogs 112 (name, format, print), 113 (resolution), 114
// (wait) and the file.
void hard_copy(Session& s);

}  // namespace zentol
