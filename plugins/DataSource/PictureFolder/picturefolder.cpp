#include "sdk/datasource.h"
#include "foldersource.h"

OCULINEX_DATA_SOURCE("Picture Folder", FolderSource)
