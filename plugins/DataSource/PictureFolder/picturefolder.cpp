#include "foldersource.h"
#include "sdk/datasource.h"

OCULINEX_DATA_SOURCE(FolderSource)
