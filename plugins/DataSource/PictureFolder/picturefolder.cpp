#include "common/datasource.h"
#include "foldersource.h"

OCULINEX_DATA_SOURCE("Picture Folder", FolderSource)
