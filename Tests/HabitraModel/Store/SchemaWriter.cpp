#include <exception>
#include <fstream>
#include <iostream>
#include <string_view>

#include "SchemaPage.h"

/// HabitraSchema [--write FILE]: prints the page of the store's tables, or writes it into a file.
int main(int argc, char** argv) {
  try {
    if (argc == 1) {
      std::cout << habitra::schemaPage();
      return 0;
    }
    if (argc != 3 || argv[1] != std::string_view("--write")) {
      std::cerr << "usage: HabitraSchema [--write FILE]\n";
      return 2;
    }
    if ((std::ofstream(argv[2]) << habitra::schemaPage()).flush()) return 0;
    std::cerr << argv[2] << ": cannot be written\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
  }
  return 2;
}
