#include "client/banner.h"

#include "client/console.h"

void printVersion() {
    consolePrint(u"Standalone client for Tavi Renderer.\n");
    consolePrint(u"Made by the Tavi Renderer team.\n");
    consolePrint(u"Version 1.5.60, 30 May 2024");
    consolePrint(u"\nContact: tavi-renderer@users.invalid\n\n");
}

void printUsage() {
    consolePrint(u"Command line arguments:\n");
    consolePrint(u"  -version                  print the version and exit\n");
    consolePrint(u"  -help                     print this text and exit\n");
    consolePrint(u"  -ignorewarnings           render even if the scene loads with warnings\n");
    consolePrint(u"  -jpeg                     save the image as JPEG as well\n");
    consolePrint(u"  -tiff                     save the image as TIFF as well\n");
    consolePrint(u"  -noaffinity               do not pin the render threads to processors\n");
    consolePrint(u"  -scene <file>             the scene file to render (required)\n");
    consolePrint(u"  -settings <file>          a TaviSettings document over the scene's settings\n");
    consolePrint(u"  -camera <file>            a TaviCamera document for the render camera\n");
    consolePrint(u"  -materials <folder>       folder of TaviMaterial documents, one per material name\n");
    consolePrint(u"  -texmaps <folder>         folder of TaviTexMap documents, one per texmap name\n");
    consolePrint(u"  -textures <folder>        a folder to search for textures (up to 16 times)\n");
    consolePrint(u"  -outputpath <folder>      folder of the rendered images\n");
    consolePrint(u"  -outputname <name>        base name of the rendered images\n");
    consolePrint(u"  -cachepath <folder>       folder of the render caches\n");
    consolePrint(u"  -size <x> <y>             image size in pixels\n");
    consolePrint(u"  -region <x> <y> <sx> <sy> render only this region of the image\n");
    consolePrint(u"  -numpasses <n>            number of passes\n");
    consolePrint(u"  -affinity <n>             first processor of the render threads\n");
    consolePrint(u"  -numthreads <n>           number of render threads\n");
    consolePrint(u"  -frame <n>                frame number of an animated scene\n");
    consolePrint(u"  -fps <n>                  frames per second of an animated scene\n");
    consolePrint(u"\n");
}
