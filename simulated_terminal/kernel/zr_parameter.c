// SPDX-License-Identifier: GPL-2.0
/* Module parameters that are one of several words, or a list of them. */
#include <linux/kernel.h>
#include <linux/string.h>

#include "zr_terminal.h"

#define ZR_ITEM_SIZE 32

int zr_parameter_choice(const char *parameter, const char *value,
			const char * const *choices)
{
	int index = match_string(choices, -1, value);

	if (index < 0)
		pr_err("zr_terminal: parameter %s does not know \"%s\"\n",
		       parameter, value);
	return index;
}

/* Copy the first item of @list; NULL at the end, else where the next starts. */
static const char *next_item(const char *list, char *item)
{
	size_t length;

	if (!list || !*list)
		return NULL;
	length = strcspn(list, ",");
	strscpy(item, list, min_t(size_t, length + 1, ZR_ITEM_SIZE));
	return list + length + (list[length] == ',');
}

bool zr_list_has(const char *list, const char *item)
{
	char each[ZR_ITEM_SIZE];

	while ((list = next_item(list, each)))
		if (!strcmp(each, item))
			return true;
	return false;
}

int zr_list_check(const char *parameter, const char *list,
		  bool (*known)(const char *item))
{
	char each[ZR_ITEM_SIZE];

	while ((list = next_item(list, each))) {
		if (known(each))
			continue;
		pr_err("zr_terminal: parameter %s does not know \"%s\"\n",
		       parameter, each);
		return -EINVAL;
	}
	return 0;
}
