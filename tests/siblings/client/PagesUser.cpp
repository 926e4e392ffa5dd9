// PagesUser PROGRAMS WALL: a program that wants pages, to be killed. It writes a line when its
// helper is in the middle of a page, which never ends. WALL is namespaces, system-calls or none.
#include <cstdio>
#include <string_view>

#include "siblings/client/PageHelper.h"

int main(int argc, char** argv) {
  using namespace tarn::pages;
  if (argc != 3) return 2;
  const std::string_view wall = argv[2];
  HelperOptions options;
  options.programs = argv[1];
  options.sandbox = wall != "none";
  options.walls = {wall == "namespaces" ? Wall::Namespaces : Wall::SystemCalls};
  PageHelper helper(options);
  DocumentOnPaper document;
  document.bytes = "draw report 1\ndraw loop";
  const LaidOut laidOut = helper.layOut(document);
  helper.draw(laidOut, 1, 72, [](int percent) {
    if (percent == 1) std::puts("busy");
    std::fflush(stdout);
    return true;
  });
  return 0;
}
