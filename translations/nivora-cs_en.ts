<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ru">
<context>
    <name>CoordSysTexts</name>
    <message>
        <source>Не проинициализированы КС</source>
        <translation>Coordinate systems are not initialised</translation>
    </message>
    <message>
        <source>Строка КС пустая</source>
        <translation>The text of the coordinate system is empty</translation>
    </message>
    <message>
        <source>Неверная строка КС
%1</source>
        <translation>Not a coordinate system
%1</translation>
    </message>
    <message>
        <source>КС не имеет плановой части: %1</source>
        <translation>The coordinate system has no horizontal part: %1</translation>
    </message>
    <message>
        <source>Ошибка импорта из строки WKT:
%1
(%2)</source>
        <translation>Cannot read the WKT text:
%1
(%2)</translation>
    </message>
    <message>
        <source>Неверный формат строки</source>
        <translation>Wrong format of the text</translation>
    </message>
    <message>
        <source>Ошибка инициализации проекции: %1</source>
        <translation>Cannot make the projection: %1</translation>
    </message>
    <message>
        <source>Ошибка экспорта КС в формат proj</source>
        <translation>Cannot write the coordinate system as PROJ text</translation>
    </message>
    <message>
        <source>Не могу открыть файл %0</source>
        <translation>Cannot open the file %0</translation>
    </message>
    <message>
        <source>Данные для SRID=%1 в файле %0 отсутствуют</source>
        <translation>No data for SRID=%1 in the file %0</translation>
    </message>
    <message>
        <source>Вырожденное аффинное преобразование</source>
        <translation>The affine transformation is singular</translation>
    </message>
    <message>
        <source>Каталог с ресурсами %1 не существует</source>
        <translation>The resource directory %1 does not exist</translation>
    </message>
    <message>
        <source>База данных %1 не подходит для PROJ, каталог пропущен</source>
        <translation>PROJ cannot use the database %1, the directory is left out</translation>
    </message>
    <message>
        <source>Не найден файл &quot;%1&quot;. Необходимо указать путь к нему в переменной окружения %2. Каталог можно указать также в PROJ_DATA или в настройке proj/ProjDataDir.</source>
        <translation>File &quot;%1&quot; not found. Give its path in the environment variable %2. The directory can also be given in PROJ_DATA or in the setting proj/ProjDataDir.</translation>
    </message>
    <message>
        <source>Путь с ресурсами неверен:%1</source>
        <translation>Wrong path of the resources: %1</translation>
    </message>
    <message>
        <source>Системные ресурсы КС: %1</source>
        <translation>System resources of coordinate systems: %1</translation>
    </message>
    <message>
        <source>Пользовательские ресурсы КС: %1</source>
        <translation>User&apos;s resources of coordinate systems: %1</translation>
    </message>
    <message>
        <source>Инициализация координатных систем</source>
        <translation>Starting up coordinate systems</translation>
    </message>
    <message>
        <source>Очистка ресурсов координатных систем</source>
        <translation>Releasing the resources of coordinate systems</translation>
    </message>
    <message>
        <source>Не могу открыть файл %1</source>
        <translation>Cannot open the file %1</translation>
    </message>
    <message>
        <source>Ограничения для КС: %1</source>
        <translation>Bounds of coordinate systems: %1</translation>
    </message>
    <message>
        <source>Строка с координатной системой пустая</source>
        <translation>The text with the coordinate system is empty</translation>
    </message>
    <message>
        <source>Не могу рассчитать ограничивающий прямоугольник для КС (%1)</source>
        <translation>Cannot work out the bounds of the coordinate system (%1)</translation>
    </message>
    <message>
        <source>Не могу задать пустые границы</source>
        <translation>Cannot set empty bounds</translation>
    </message>
    <message>
        <source>Не могу определить единицы измерения (%1) КС (%2).</source>
        <translation>Cannot tell the unit (%1) of the coordinate system (%2).</translation>
    </message>
    <message>
        <source>Не могу получить параметр</source>
        <translation>Cannot get the parameter</translation>
    </message>
    <message>
        <source>Не могу получить параметры</source>
        <translation>Cannot get the parameters</translation>
    </message>
    <message>
        <source>Ошибка прямого преобразования (%1, %2): %3</source>
        <translation>Forward conversion of (%1, %2) failed: %3</translation>
    </message>
    <message>
        <source>Ошибка обратного преобразования (%1, %2): %3</source>
        <translation>Inverse conversion of (%1, %2) failed: %3</translation>
    </message>
    <message>
        <source>Ошибка преобразования первой точки (%1, %2)</source>
        <translation>Conversion of the first point (%1, %2) failed</translation>
    </message>
    <message>
        <source>Ошибка преобразования второй точки (%1, %2)</source>
        <translation>Conversion of the second point (%1, %2) failed</translation>
    </message>
    <message>
        <source>Ошибка экспорта координатной системы в формат %0. %1</source>
        <translation>Cannot write the coordinate system as %0. %1</translation>
    </message>
    <message>
        <source>Ошибка экспорта КС в формат proj
%1
%2</source>
        <translation>Cannot write the coordinate system as PROJ text
%1
%2</translation>
    </message>
    <message>
        <source>Аффинное преобразование не записано: %1</source>
        <translation>The affine transformation was not written: %1</translation>
    </message>
    <message>
        <source>Неизвестный тип проекции %1</source>
        <translation>Unknown type of projection: %1</translation>
    </message>
    <message>
        <source>Пустой прямоугольник на входе %1</source>
        <translation>Empty input rectangle %1</translation>
    </message>
    <message>
        <source>Ни одна из КС не является географической</source>
        <translation>Neither of the coordinate systems is geographic</translation>
    </message>
    <message>
        <source>Ошибка преобразования координат</source>
        <translation>Coordinates cannot be transformed</translation>
    </message>
    <message>
        <source>Исправленная КС: %1</source>
        <translation>Corrected coordinate system: %1</translation>
    </message>
    <message>
        <source>Не могу создать объект трансформации. %1</source>
        <translation>Cannot make the transformation. %1</translation>
    </message>
    <message>
        <source>Слишком глубокая вложенность элементов</source>
        <translation>Elements are nested too deeply</translation>
    </message>
    <message>
        <source>Это не файл</source>
        <translation>This is not a file</translation>
    </message>
    <message>
        <source>Файл слишком велик</source>
        <translation>The file is too large</translation>
    </message>
    <message>
        <source>Неизвестная единица измерения: %1</source>
        <translation>Unknown unit: %1</translation>
    </message>
    <message>
        <source>Не могу определить дополнительные параметры датума</source>
        <translation>Cannot read the further parameters of the datum</translation>
    </message>
    <message>
        <source>Не могу определить единицы измерения.</source>
        <translation>Cannot tell the unit.</translation>
    </message>
    <message>
        <source>Неверное значение проекции:%1</source>
        <translation>Wrong value of the projection: %1</translation>
    </message>
    <message>
        <source>Не могу определить тип КС</source>
        <translation>Cannot tell the type of the coordinate system</translation>
    </message>
    <message>
        <source>Недостаточно параметров в строке prj</source>
        <translation>Not enough parameters in the CoordSys text</translation>
    </message>
    <message>
        <source>Пустая входная строка</source>
        <translation>The input text is empty</translation>
    </message>
    <message>
        <source>Ошибка при освобождении ресурсов %0</source>
        <translation>Cannot release the resources of %0</translation>
    </message>
    <message>
        <source>Файл с проекциями: %1</source>
        <translation>File of projections: %1</translation>
    </message>
    <message>
        <source>Категорий: %1, Проекций: %2</source>
        <translation>Categories: %1, projections: %2</translation>
    </message>
    <message>
        <source>Каталог координатных систем MapInfo не содержит категории с номером %1</source>
        <translation>The MapInfo catalogue of coordinate systems has no category number %1</translation>
    </message>
    <message>
        <source>Каталог координатных систем MapInfo не содержит координатной системы с индексом %1,%2</source>
        <translation>The MapInfo catalogue of coordinate systems has no system with the index %1,%2</translation>
    </message>
    <message>
        <source>Широта не попадает в допустимые пределы (от -90 до 90 градусов)</source>
        <translation>Latitude is outside of the limits (-90 to 90 degrees)</translation>
    </message>
    <message>
        <source>Долгота не попадает в допустимые пределы (от -180 до 360 градусов)</source>
        <translation>Longitude is outside of the limits (-180 to 360 degrees)</translation>
    </message>
    <message>
        <source>Ошибка строки MGRS: строка слишком длинная, слишком короткая или содержит ошибки</source>
        <translation>Bad MGRS text: too long, too short or with errors</translation>
    </message>
    <message>
        <source>Точность должна быть между 0 и 5 включительно</source>
        <translation>Precision must be from 0 to 5</translation>
    </message>
    <message>
        <source>Величина большой полуоси отрицательная или равна нулю</source>
        <translation>The semi-major axis is negative or zero</translation>
    </message>
    <message>
        <source>Обратный коэффициент сжатия не попадает в допустимые пределы (от 250 до 350)</source>
        <translation>The inverse flattening is outside of the limits (250 to 350)</translation>
    </message>
    <message>
        <source>Координата восточного положения не попадает в допустимые пределы (от 100,000 до 900,000 метров для UTM) (от 0 до 4,000,000 метров для UPS)</source>
        <translation>The easting is outside of the limits (100,000 to 900,000 metres for UTM) (0 to 4,000,000 metres for UPS)</translation>
    </message>
    <message>
        <source>Координата северного положения не попадает в допустимые пределы (от 0 до 10,000,000 метров для UTM) (от 0 до 4,000,000 метров для UPS)</source>
        <translation>The northing is outside of the limits (0 to 10,000,000 metres for UTM) (0 to 4,000,000 metres for UPS)</translation>
    </message>
    <message>
        <source>Номер зоны не попадает в допустимые пределы (от 1 до 60)</source>
        <translation>The zone number is outside of the limits (1 to 60)</translation>
    </message>
    <message>
        <source>Не задано полушарие (должно быть &apos;N&apos; или &apos;S&apos;)</source>
        <translation>The hemisphere is not given (it must be &apos;N&apos; or &apos;S&apos;)</translation>
    </message>
    <message>
        <source>Неизвестный код ошибки %1</source>
        <translation>Unknown error code %1</translation>
    </message>
    <message>
        <source>%1: Ошибка %2</source>
        <translation>%1: error %2</translation>
    </message>
    <message>
        <source>Файл с параметрами проекций: %1</source>
        <translation>File of projection parameters: %1</translation>
    </message>
    <message>
        <source>Ошибка загрузки файла проекций %1</source>
        <translation>Cannot load the file of projections %1</translation>
    </message>
    <message>
        <source>Строка %1: Не удалось добавить проекцию</source>
        <translation>Line %1: cannot add the projection</translation>
    </message>
    <message>
        <source>Строка %1: Не удалось добавить эллипсоид</source>
        <translation>Line %1: cannot add the ellipsoid</translation>
    </message>
    <message>
        <source>Строка %1: Не удалось добавить датум</source>
        <translation>Line %1: cannot add the datum</translation>
    </message>
    <message>
        <source>Строка %1: Не удалось добавить линейную единицу измерения</source>
        <translation>Line %1: cannot add the unit of length</translation>
    </message>
    <message>
        <source>Строка %1: Не удалось добавить площадную единицу измерения</source>
        <translation>Line %1: cannot add the unit of area</translation>
    </message>
    <message>
        <source>Ошибка экспорта КС в формат MI Prj: %1</source>
        <translation>Cannot write the coordinate system as CoordSys text: %1</translation>
    </message>
    <message>
        <source>Запрос имени для %1=%2</source>
        <translation>Looking up the name of %1=%2</translation>
    </message>
    <message>
        <source>Запрос proj строки для %1=%2</source>
        <translation>Looking up the PROJ text of %1=%2</translation>
    </message>
    <message>
        <source>Запрос %0 строки для %1=%2</source>
        <translation>Looking up the %0 text of %1=%2</translation>
    </message>
    <message>
        <source>Запрос ограничивающего прямоугольника для %1=%2</source>
        <translation>Looking up the area of use of %1=%2</translation>
    </message>
    <message>
        <source>Ошибка при инициализации проекции %1</source>
        <translation>Cannot make the projection %1</translation>
    </message>
    <message>
        <source>Неподдерживаемый тип %1</source>
        <translation>Type %1 is not supported</translation>
    </message>
    <message>
        <source>Категорий=%1, Всего проекций=%2</source>
        <translation>Categories=%1, projections in all=%2</translation>
    </message>
    <message>
        <source>Строка PRJ сформирована некорректно (%1)</source>
        <translation>The CoordSys text came out wrong (%1)</translation>
    </message>
    <message>
        <source>Сдвиг датума неизвестен, в строке PRJ он нулевой (%1)</source>
        <translation>The shift of the datum is unknown, it is zero in the CoordSys text (%1)</translation>
    </message>
    <message>
        <source>Вертикальная часть опущена.</source>
        <translation>The vertical part is left out.</translation>
    </message>
    <message>
        <source>Датум не указан: сдвиг к WGS 84 принят нулевым.</source>
        <translation>No datum is given: its shift to WGS 84 is taken as zero.</translation>
    </message>
    <message>
        <source>Единица измерения не опознана: приняты метры.</source>
        <translation>The unit is not known: metres are taken.</translation>
    </message>
    <message>
        <source>КС «%1» не записывается в этом формате: %2</source>
        <translation>The coordinate system &quot;%1&quot; cannot be written in this format: %2</translation>
    </message>
    <message>
        <source>Географическая</source>
        <translation>Geographic</translation>
    </message>
    <message>
        <source>Географическая с повёрнутым полюсом</source>
        <translation>Geographic with a rotated pole</translation>
    </message>
    <message>
        <source>Прямоугольная</source>
        <translation>Projected</translation>
    </message>
    <message>
        <source>План-схема</source>
        <translation>Plan without a place on the earth</translation>
    </message>
    <message>
        <source>аффинное преобразование было бы потеряно</source>
        <translation>the affine transformation would be lost</translation>
    </message>
    <message>
        <source>Ошибка преобразования. Возможно, выходит за пределы КС.</source>
        <translation>Transformation failed. The coordinates may lie outside of the coordinate system.</translation>
    </message>
    <message>
        <source>Результирующий прямоугольник: (%1 %2) (%3 %4)</source>
        <translation>Resulting rectangle: (%1 %2) (%3 %4)</translation>
    </message>
    <message>
        <source>прямого</source>
        <translation>forward</translation>
    </message>
    <message>
        <source>обратного</source>
        <translation>inverse</translation>
    </message>
    <message>
        <source>Ошибка %1 преобразования: %2</source>
        <translation>The %1 transformation failed: %2</translation>
    </message>
    <message>
        <source>Преобразование координат не произведено. %2 (%3 %4)</source>
        <translation>Coordinates were not transformed. %2 (%3 %4)</translation>
    </message>
    <message>
        <source>Без имени</source>
        <translation>Unnamed</translation>
    </message>
    <message>
        <source>Пользовательские КС: %1 (%2)</source>
        <translation>User&apos;s coordinate systems: %1 (%2)</translation>
    </message>
    <message>
        <source>Файл %1 существует</source>
        <translation>The file %1 exists</translation>
    </message>
    <message>
        <source>Пользовательские КС сохранены в файле %1</source>
        <translation>User&apos;s coordinate systems are saved in the file %1</translation>
    </message>
    <message>
        <source>Не могу создать файл %1</source>
        <translation>Cannot create the file %1</translation>
    </message>
    <message>
        <source>Файл %1 не читается и будет заменён, прежняя копия %2 сохранена</source>
        <translation>The file %1 cannot be read and is being replaced, its older copy %2 is kept</translation>
    </message>
    <message>
        <source>Файл %1 не читается и будет заменён, его копия: %2</source>
        <translation>The file %1 cannot be read and is being replaced, its copy: %2</translation>
    </message>
    <message>
        <source>Корневой элемент &lt;%1&gt; не из файла систем координат</source>
        <translation>The root element &lt;%1&gt; is not that of a file of coordinate systems</translation>
    </message>
    <message>
        <source>нет</source>
        <translation>none</translation>
    </message>
    <message>
        <source>Текст слишком длинный для системы координат: «%1»</source>
        <translation>The text is too long for a coordinate system: &quot;%1&quot;</translation>
    </message>
    <message>
        <source>В тексте системы координат недопустимые символы: «%1»</source>
        <translation>Characters that cannot stand in the text of a coordinate system: &quot;%1&quot;</translation>
    </message>
    <message>
        <source>Слишком глубокая вложенность скобок: «%1»</source>
        <translation>Brackets are nested too deeply: &quot;%1&quot;</translation>
    </message>
    <message>
        <source>строка с меткой</source>
        <translation>text with a tag</translation>
    </message>
    <message>
        <source>PROJJSON</source>
        <translation>PROJJSON</translation>
    </message>
    <message>
        <source>WKT</source>
        <translation>WKT</translation>
    </message>
    <message>
        <source>строка PROJ</source>
        <translation>PROJ text</translation>
    </message>
    <message>
        <source>строка каталога</source>
        <translation>line of a catalogue</translation>
    </message>
    <message>
        <source>строка CoordSys</source>
        <translation>CoordSys text</translation>
    </message>
    <message>
        <source>код</source>
        <translation>code</translation>
    </message>
    <message>
        <source>название</source>
        <translation>name</translation>
    </message>
    <message>
        <source>Не удалось прочитать систему координат (%1) «%2»: %3</source>
        <translation>Cannot read the coordinate system (%1) &quot;%2&quot;: %3</translation>
    </message>
    <message>
        <source>За знаком @ нужно имя файла</source>
        <translation>The sign @ needs the name of a file behind it</translation>
    </message>
    <message>
        <source>Файл %1 ссылается на другой файл</source>
        <translation>The file %1 refers to another file</translation>
    </message>
    <message>
        <source>«%1» не номер Oracle</source>
        <translation>&quot;%1&quot; is no Oracle number</translation>
    </message>
    <message>
        <source>%1: за датумом и единицей у этой проекции %2 чисел</source>
        <translation>%1: this projection has %2 numbers behind datum and unit</translation>
    </message>
    <message>
        <source>Нужна одна строка каталога, а здесь их %1</source>
        <translation>One line of a catalogue is needed, and here are %1</translation>
    </message>
    <message>
        <source>Код %1 не соответствует параметрам и отброшен</source>
        <translation>The code %1 does not fit the parameters and is left out</translation>
    </message>
    <message>
        <source>Здесь больше одной системы</source>
        <translation>Here is more than one system</translation>
    </message>
    <message>
        <source>Неверный код в «%1»</source>
        <translation>Wrong code in &quot;%1&quot;</translation>
    </message>
    <message>
        <source>PROJ не знает такой системы</source>
        <translation>PROJ does not know such a system</translation>
    </message>
    <message>
        <source>Взята только плановая часть: %1</source>
        <translation>Only the horizontal part is taken: %1</translation>
    </message>
    <message>
        <source>Система помечена в базе как устаревшая: %1</source>
        <translation>The database has the system as deprecated: %1</translation>
    </message>
    <message>
        <source>Геометрия отброшена: %1</source>
        <translation>The geometry is left aside: %1</translation>
    </message>
    <message>
        <source>В базе нет организации %1. Есть: %2. Ближайшее: %3</source>
        <translation>The database has no authority %1. There are: %2. Nearest: %3</translation>
    </message>
    <message>
        <source>Кода %1 нет, взят %2</source>
        <translation>There is no code %1, %2 is taken</translation>
    </message>
    <message>
        <source>В базе нет системы %1. Ближайшее: %2</source>
        <translation>The database has no system %1. Nearest: %2</translation>
    </message>
    <message>
        <source>Понято как %1</source>
        <translation>Understood as %1</translation>
    </message>
    <message>
        <source>Название «%1» носят несколько систем: %2</source>
        <translation>Several systems have the name &quot;%1&quot;: %2</translation>
    </message>
    <message>
        <source>Непонятно, какая это система координат: «%1». Проверено: %2. Ближайшее: %3</source>
        <translation>No coordinate system is understood: &quot;%1&quot;. Tried: %2. Nearest: %3</translation>
    </message>
    <message>
        <source>Не могу прочитать файл %1: %2</source>
        <translation>Cannot read the file %1: %2</translation>
    </message>
    <message>
        <source>В файле %1 нет предложения CoordSys: это долгота и широта</source>
        <translation>The file %1 has no CoordSys clause: it is longitude and latitude</translation>
    </message>
    <message>
        <source>рядом нет файла %1</source>
        <translation>there is no file %1 beside it</translation>
    </message>
    <message>
        <source>в нём нет текста</source>
        <translation>there is no text in it</translation>
    </message>
    <message>
        <source>Повреждён заголовок файла карты: %1</source>
        <translation>The header of the map file is damaged: %1</translation>
    </message>
    <message>
        <source>файл слишком короток</source>
        <translation>the file is too short</translation>
    </message>
    <message>
        <source>нет опознавательного числа</source>
        <translation>its cookie is missing</translation>
    </message>
    <message>
        <source>неверный размер блока</source>
        <translation>wrong size of a block</translation>
    </message>
    <message>
        <source>не число</source>
        <translation>not a number</translation>
    </message>
    <message>
        <source>нулевой масштаб</source>
        <translation>a scale of zero</translation>
    </message>
    <message>
        <source>Не могу открыть файл %1: %2</source>
        <translation>Cannot open the file %1: %2</translation>
    </message>
    <message>
        <source>неизвестная проекция</source>
        <translation>unknown projection</translation>
    </message>
    <message>
        <source>это не файл</source>
        <translation>it is no file</translation>
    </message>
    <message>
        <source>Файл карты не может содержать такую систему координат: %1</source>
        <translation>A map file cannot hold such a coordinate system: %1</translation>
    </message>
    <message>
        <source>Не могу записать файл %1: %2</source>
        <translation>Cannot write the file %1: %2</translation>
    </message>
    <message>
        <source>URN</source>
        <translation>URN</translation>
    </message>
    <message>
        <source>у CoordSys нет такой проекции</source>
        <translation>CoordSys text has no such projection</translation>
    </message>
    <message>
        <source>AUTO</source>
        <translation>AUTO</translation>
    </message>
    <message>
        <source>Эпоха координат %1 в систему не входит</source>
        <translation>The epoch of the coordinates, %1, is no part of the system</translation>
    </message>
    <message>
        <source>Системы AUTO читаются в виде AUTO:код,долгота,широта; AUTO2 — только в метрах</source>
        <translation>AUTO systems are read as AUTO:code,longitude,latitude; AUTO2 in metres only</translation>
    </message>
    <message>
        <source>«%1» — файл: чтобы прочитать его, напишите @%1</source>
        <translation>&quot;%1&quot; is a file: write @%1 to have it read</translation>
    </message>
    <message>
        <source>это не текст</source>
        <translation>it is no text</translation>
    </message>
    <message>
        <source>есть и знак, и полушарие</source>
        <translation>has a sign and a hemisphere</translation>
    </message>
    <message>
        <source>дробная часть стоит не в последней доле</source>
        <translation>has decimals before its last part</translation>
    </message>
    <message>
        <source>минуты вне допустимых пределов</source>
        <translation>has minutes out of range</translation>
    </message>
    <message>
        <source>секунды вне допустимых пределов</source>
        <translation>has seconds out of range</translation>
    </message>
    <message>
        <source>градусы вне допустимых пределов</source>
        <translation>has degrees out of range</translation>
    </message>
    <message>
        <source>число слишком велико или слишком мало</source>
        <translation>is too large or too small for a number</translation>
    </message>
    <message>
        <source>&quot;%1&quot; — не кодировка с байтом на каждый знак, как windows-1251, KOI8-R или CP866</source>
        <translation>&quot;%1&quot; is no encoding with a byte for each character, such as windows-1251, KOI8-R or CP866</translation>
    </message>
    <message>
        <source>&quot;%1&quot; нельзя записать в кодировке %2</source>
        <translation>&quot;%1&quot; cannot be written in %2</translation>
    </message>
    <message>
        <source>Файл %1 изменяет другая программа</source>
        <translation>The file %1 is being changed by another program</translation>
    </message>
    <message>
        <source>Объявление DOCTYPE не допускается</source>
        <translation>A DOCTYPE is not allowed</translation>
    </message>
    <message>
        <source>не является числом</source>
        <translation>is no number</translation>
    </message>
    <message>
        <source>Нет такой операции: %1</source>
        <translation>There is no such operation: %1</translation>
    </message>
    <message>
        <source>Для операции «%1» нет файла %2</source>
        <translation>The operation &quot;%1&quot; lacks the file %2</translation>
    </message>
    <message>
        <source>«%1», %2 м</source>
        <translation>&quot;%1&quot;, %2 m</translation>
    </message>
    <message>
        <source>у этих КС есть только пересчёт без сдвига датума</source>
        <translation>these systems have only a conversion that leaves the datum shift out</translation>
    </message>
    <message>
        <source>у этих КС есть %1</source>
        <translation>these systems have %1</translation>
    </message>
    <message>
        <source>Нет операции, которая подходит выбору: %1</source>
        <translation>No operation fits the choice: %1</translation>
    </message>
    <message>
        <source>Операция «%1» грубее, чем разрешено</source>
        <translation>The operation &quot;%1&quot; is coarser than allowed</translation>
    </message>
    <message>
        <source>Между планом и землёй операцию выбрать нельзя</source>
        <translation>No operation can be chosen between a plan and the earth</translation>
    </message>
    <message>
        <source>Операция не соединяет эти КС: точку (%1) она переводит в (%2), а не в (%3). Порядок координат: сначала x (долгота)</source>
        <translation>The operation does not join these systems: it takes the point (%1) to (%2) and not to (%3). The order of coordinates is x (longitude) first</translation>
    </message>
    <message>
        <source>Операция «%1» соединяет %2, а не эти КС</source>
        <translation>The operation &quot;%1&quot; joins %2, not these systems</translation>
    </message>
    <message>
        <source>Операция не имеет обратной: %1</source>
        <translation>The operation has no way back: %1</translation>
    </message>
    <message>
        <source>Выбор операции не читается: %1</source>
        <translation>The choice of an operation cannot be read: %1</translation>
    </message>
    <message>
        <source>Область не лежит на земле</source>
        <translation>The area does not lie on the earth</translation>
    </message>
    <message>
        <source>Погрешность должна быть больше нуля</source>
        <translation>The error must be greater than zero</translation>
    </message>
    <message>
        <source>Сдвиг датума в тексте нулевой: датум принят за WGS 84.</source>
        <translation>The text states a zero shift: its datum is taken for WGS 84.</translation>
    </message>
    <message>
        <source>номер датума</source>
        <translation>number of the datum</translation>
    </message>
    <message>
        <source>эллипсоид датума</source>
        <translation>ellipsoid of the datum</translation>
    </message>
    <message>
        <source>сдвиг датума %1</source>
        <translation>shift of the datum, figure %1</translation>
    </message>
    <message>
        <source>параметр датума %1</source>
        <translation>parameter %1 of the datum</translation>
    </message>
    <message>
        <source>параметр проекции %1</source>
        <translation>parameter %1 of the projection</translation>
    </message>
    <message>
        <source>коэффициент аффинного преобразования %1</source>
        <translation>coefficient %1 of the affine transformation</translation>
    </message>
    <message>
        <source>число границ %1</source>
        <translation>figure %1 of the bounds</translation>
    </message>
    <message>
        <source>Пробел вместо запятой или внутри числа перед «%1» (знак %2)</source>
        <translation>A blank in place of a comma, or within a number, before &quot;%1&quot; (character %2)</translation>
    </message>
    <message>
        <source>Пустое место или лишняя скобка (знак %1)</source>
        <translation>An empty place or a bracket too many (character %1)</translation>
    </message>
    <message>
        <source>Границы без площади отброшены.</source>
        <translation>Bounds without an area are left out.</translation>
    </message>
    <message>
        <source>Лишние нули за параметрами проекции отброшены.</source>
        <translation>Zeros behind the parameters of the projection are left out.</translation>
    </message>
    <message>
        <source>Недостающие параметры датума приняты нулями.</source>
        <translation>Missing parameters of the datum are taken as zeros.</translation>
    </message>
    <message>
        <source>Единица не указана: приняты метры.</source>
        <translation>No unit is stated: metres are assumed.</translation>
    </message>
    <message>
        <source>Недостающие параметры проекции приняты нулями.</source>
        <translation>Missing parameters of the projection are taken as zeros.</translation>
    </message>
    <message>
        <source>Масштаб не указан: принят 1.</source>
        <translation>No scale is stated: 1 is assumed.</translation>
    </message>
    <message>
        <source>Не число: «%1» (знак %2), %3</source>
        <translation>Not a number: &quot;%1&quot; (character %2), %3</translation>
    </message>
    <message>
        <source>Неизвестная единица: «%1» (знак %2)</source>
        <translation>Unknown unit: &quot;%1&quot; (character %2)</translation>
    </message>
    <message>
        <source>Лишнее в строке КС: «%1» (знак %2)</source>
        <translation>Not part of a CoordSys string: &quot;%1&quot; (character %2)</translation>
    </message>
    <message>
        <source>Недостаёт параметров датума «%1» (знак %2)</source>
        <translation>Parameters are missing of the datum &quot;%1&quot; (character %2)</translation>
    </message>
    <message>
        <source>Углы границ стоят в скобках, (x1, y1) (x2, y2): «%1» (знак %2)</source>
        <translation>Corners of bounds stand in brackets, (x1, y1) (x2, y2): &quot;%1&quot; (character %2)</translation>
    </message>
    <message>
        <source>Сдвиг</source>
        <translation>Shift</translation>
    </message>
    <message>
        <source>Подобие</source>
        <translation>Similarity</translation>
    </message>
    <message>
        <source>Поперечная проекция Меркатора</source>
        <translation>Transverse Mercator</translation>
    </message>
    <message>
        <source>Аффинное преобразование</source>
        <translation>Affine transformation</translation>
    </message>
    <message>
        <source>Сдвиг датума по семи параметрам</source>
        <translation>Datum shift by seven parameters</translation>
    </message>
    <message>
        <source>Многочлен второй степени</source>
        <translation>Polynomial of degree two</translation>
    </message>
    <message>
        <source>Точки не определяют параметры модели</source>
        <translation>The points do not determine the model</translation>
    </message>
    <message>
        <source>План без места на Земле не имеет ни датума, ни осевого меридиана</source>
        <translation>A plan without a place on the earth has neither datum nor central meridian</translation>
    </message>
    <message>
        <source>Точка %1: координаты не числа</source>
        <translation>Point %1: the coordinates are no numbers</translation>
    </message>
    <message>
        <source>Точка %1: вес не положительное число</source>
        <translation>Point %1: the weight is no positive number</translation>
    </message>
    <message>
        <source>Точка %1: в известной системе нет такого места</source>
        <translation>Point %1: the known system has no such place</translation>
    </message>
    <message>
        <source>футы</source>
        <translation>feet</translation>
    </message>
    <message>
        <source>ярды</source>
        <translation>yards</translation>
    </message>
    <message>
        <source>сажени</source>
        <translation>sazhens</translation>
    </message>
    <message>
        <source>километры</source>
        <translation>kilometres</translation>
    </message>
    <message>
        <source>миллиметры</source>
        <translation>millimetres</translation>
    </message>
    <message>
        <source>сантиметры</source>
        <translation>centimetres</translation>
    </message>
    <message>
        <source>морские мили</source>
        <translation>nautical miles</translation>
    </message>
    <message>
        <source>Масштаб %1: местные координаты даны в единицах «%2»?</source>
        <translation>A fit of scale %1: are the local coordinates in %2?</translation>
    </message>
    <message>
        <source>Масштаб %1: известные координаты даны в единицах «%2»?</source>
        <translation>A fit of scale %1: are the known coordinates in %2?</translation>
    </message>
    <message>
        <source>Местные координаты похожи на зону с осевым меридианом %1°: другая зона?</source>
        <translation>The local coordinates look like the zone of the central meridian %1°: another zone?</translation>
    </message>
    <message>
        <source>Сдвиг %1 км к востоку и %2 км к северу: ложное начало, номер зоны?</source>
        <translation>A shift of %1 km east and %2 km north: a false origin, a number of a zone?</translation>
    </message>
    <message>
        <source>С переставленными осями точки согласуются: x и y перепутаны?</source>
        <translation>With axes swapped the points agree: are x and y mixed up?</translation>
    </message>
    <message>
        <source>Система не создаётся: %1</source>
        <translation>The system cannot be made: %1</translation>
    </message>
    <message>
        <source>Для сдвига датума нужны эллипсоид и проекция местных координат</source>
        <translation>A datum shift needs ellipsoid and projection of the local coordinates</translation>
    </message>
    <message>
        <source>Точки лежат вне области проекции</source>
        <translation>The points lie outside the domain of the projection</translation>
    </message>
    <message>
        <source>Нужно не меньше точек: %1, а разных точек: %2</source>
        <translation>Points needed: %1 at least; different points given: %2</translation>
    </message>
    <message>
        <source>Точки лежат на одной прямой</source>
        <translation>The points lie on a line</translation>
    </message>
    <message>
        <source>Многочлен второй степени не записывается как система координат</source>
        <translation>A polynomial of degree two makes no coordinate system</translation>
    </message>
    <message>
        <source>У экватора осевой меридиан по точкам не находится</source>
        <translation>Near the equator points do not tell the central meridian</translation>
    </message>
    <message>
        <source>Система повёрнута на %1°: осевого меридиана с таким сближением рядом нет</source>
        <translation>The system is turned by %1°: no central meridian near by has such a convergence</translation>
    </message>
    <message>
        <source>Точки лежат в одном месте</source>
        <translation>The points lie at one place</translation>
    </message>
    <message>
        <source>в нём нет планетоцентрических широт</source>
        <translation>it has no planetocentric latitudes</translation>
    </message>
    <message>
        <source>Не удалось прочитать КС: %1</source>
        <translation>The coordinate system cannot be read: %1</translation>
    </message>
    <message>
        <source>Нет каталога %1</source>
        <translation>There is no directory %1</translation>
    </message>
    <message>
        <source>Высоты не пересчитываются: связь их систем неизвестна (ошибка была бы порядка %1 м)</source>
        <translation>Heights are not converted: nothing is known between their systems (the error would be some %1 m)</translation>
    </message>
    <message>
        <source>Высоты не пересчитываются: нет файла %1 (ошибка была бы порядка %2 м)</source>
        <translation>Heights are not converted: the file %1 is missing (the error would be some %2 m)</translation>
    </message>
    <message>
        <source>у CoordSys нет такого эллипсоида, ближайший отличается на %1 м</source>
        <translation>CoordSys has no such ellipsoid, the nearest is %1 m off</translation>
    </message>
    <message>
        <source>у датума в CoordSys другой начальный меридиан</source>
        <translation>the datum in CoordSys has another prime meridian</translation>
    </message>
    <message>
        <source>плоскость ближайшей строки CoordSys отличается на %1 м</source>
        <translation>the plane of the nearest CoordSys text is %1 m off</translation>
    </message>
    <message>
        <source>ни одно место области применения не вычисляется</source>
        <translation>not one place of the area of use can be computed</translation>
    </message>
    <message>
        <source>плоскость отличается на %1 м</source>
        <translation>its plane is %1 m off</translation>
    </message>
    <message>
        <source>программы на GDAL пропускают Affine без сообщения: ошибка до %1 м</source>
        <translation>programs on GDAL pass over Affine without a word: up to %1 m off</translation>
    </message>
    <message>
        <source>Текст PROJ ничего не говорит о системах высот: задайте операцию кодом или именем</source>
        <translation>A PROJ text says nothing of height systems: give the operation by code or name</translation>
    </message>
    <message>
        <source>оси переставлены</source>
        <translation>axes swapped</translation>
    </message>
    <message>
        <source>координаты в километрах</source>
        <translation>coordinates in kilometres</translation>
    </message>
    <message>
        <source>координаты в футах</source>
        <translation>coordinates in feet</translation>
    </message>
    <message>
        <source>номер зоны перед координатой опущен</source>
        <translation>the zone&apos;s number before the easting is left out</translation>
    </message>
    <message>
        <source>перед координатой добавлен номер зоны</source>
        <translation>the zone&apos;s number stands before the easting</translation>
    </message>
    <message>
        <source>датум строки беднее зарегистрированного: %1 м</source>
        <translation>the text&apos;s datum says less than the registered operation: %1 m</translation>
    </message>
    <message>
        <source>единицы в %1 м у CoordSys нет, строка называет её метром</source>
        <translation>CoordSys has no unit of %1 m, the text calls it the metre</translation>
    </message>
    <message>
        <source>в нём нет аффинного преобразования долгот и широт</source>
        <translation>it has no affine transformation of longitudes and latitudes</translation>
    </message>
    <message>
        <source>градусы, минуты и секунды одним числом</source>
        <translation>degrees, minutes and seconds in one number</translation>
    </message>
    <message>
        <source>Координаты на эпоху %1 нельзя перевести на эпоху %2: обе системы («%3» и «%4») движутся относительно плит, а как двигались точки, неизвестно</source>
        <translation>Coordinates of epoch %1 cannot be moved to epoch %2: both systems (&quot;%3&quot; and &quot;%4&quot;) move against the plates, and how the points moved is unknown</translation>
    </message>
</context>
<context>
    <name>ModelTexts</name>
    <message>
        <source>Не могу подготовить поиск систем: %1</source>
        <translation>Cannot prepare the search for systems: %1</translation>
    </message>
    <message>
        <source>Мои системы</source>
        <translation>My systems</translation>
    </message>
    <message>
        <source>Недавние</source>
        <translation>Recently used</translation>
    </message>
    <message>
        <source>Каталог MapInfo</source>
        <translation>MapInfo catalogue</translation>
    </message>
    <message>
        <source>База PROJ: EPSG и другие</source>
        <translation>PROJ database: EPSG and others</translation>
    </message>
    <message>
        <source>Название</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Код</source>
        <translation>Code</translation>
    </message>
    <message>
        <source>Раздел</source>
        <translation>Section</translation>
    </message>
</context>
</TS>
