#include "DataSource/datasource.h"
